#include "data_share_provider_stub.h"

#include "ipc_types.h"

namespace Tarvo::DataShare {

int DataShareProviderStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                           MessageOption& option)
{
    if (code != CONNECT) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    std::string uri;
    std::string extUri;
    if (data.ReadInterfaceToken() != GetDescriptor() || !data.ReadString(uri) || !data.ReadString(extUri)) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> callerToken = data.ReadRemoteObject();
    if (callerToken == nullptr) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> connection = Connect(uri, extUri, callerToken);
    if (connection == nullptr) {
        return reply.WriteInt32(RESULT_REFUSED) ? ERR_NONE : ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(RESULT_OK) && reply.WriteRemoteObject(connection) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::DataShare
