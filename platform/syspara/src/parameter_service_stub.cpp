#include "parameter_service_stub.h"

#include "ipc_types.h"
#include "message_parcel.h"

namespace Tarvo::system {

int ParameterServiceStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                          MessageOption& option)
{
    if (code != GET_PARAMETER && code != SET_PARAMETER) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    return code == GET_PARAMETER ? HandleGet(data, reply) : HandleSet(data, reply);
}

int ParameterServiceStub::HandleGet(MessageParcel& data, MessageParcel& reply)
{
    std::string key;
    if (!data.ReadString(key)) {
        return ERR_INVALID_VALUE;
    }
    std::optional<std::string> value = GetParameter(key);
    if (!reply.WriteInt32(value ? 1 : 0) || (value && !reply.WriteString(*value))) {
        return ERR_INVALID_VALUE;
    }
    return ERR_NONE;
}

int ParameterServiceStub::HandleSet(MessageParcel& data, MessageParcel& reply)
{
    std::string key;
    std::string value;
    if (!data.ReadString(key) || !data.ReadString(value)) {
        return ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(SetParameter(key, value)) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::system
