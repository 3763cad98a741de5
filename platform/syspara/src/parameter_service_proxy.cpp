#include "parameter_service_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::system {
namespace {
const BrokerDelegator<ParameterServiceProxy> delegator;
}

ParameterServiceProxy::ParameterServiceProxy(const sptr<IRemoteObject>& impl) : IRemoteProxy<IParameterService>(impl) {}

int ParameterServiceProxy::Call(uint32_t code, MessageParcel& data, MessageParcel& reply)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    MessageOption option(MessageOption::TF_SYNC, MessageOption::TF_WAIT_TIME);
    return remote->SendRequest(code, data, reply, option);
}

int32_t ParameterServiceProxy::SetParameter(const std::string& key, const std::string& value)
{
    MessageParcel data;
    MessageParcel reply;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(key) || !data.WriteString(value)) {
        return ERR_INVALID_VALUE;
    }
    int status = Call(SET_PARAMETER, data, reply);
    if (status != ERR_NONE) {
        return status;
    }
    int32_t result = 0;
    return reply.ReadInt32(result) ? result : ERR_INVALID_VALUE;
}

std::optional<std::string> ParameterServiceProxy::GetParameter(const std::string& key)
{
    MessageParcel data;
    MessageParcel reply;
    int32_t found = 0;
    std::string value;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(key) ||
        Call(GET_PARAMETER, data, reply) != ERR_NONE || !reply.ReadInt32(found) || found == 0 ||
        !reply.ReadString(value)) {
        return std::nullopt;
    }
    return value;
}

}  // namespace Tarvo::system
