#include "data_share_provider_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::DataShare {
namespace {
const BrokerDelegator<DataShareProviderProxy> delegator;
}

DataShareProviderProxy::DataShareProviderProxy(const sptr<IRemoteObject>& impl) : IRemoteProxy<IDataShareProvider>(impl)
{
}

sptr<IRemoteObject> DataShareProviderProxy::Connect(const std::string& uri, const std::string& extUri,
                                                    const sptr<IRemoteObject>& callerToken)
{
    sptr<IRemoteObject> remote = Remote();
    MessageParcel data;
    if (remote == nullptr || !data.WriteInterfaceToken(GetDescriptor()) || !data.WriteString(uri) ||
        !data.WriteString(extUri) || !data.WriteRemoteObject(callerToken)) {
        return nullptr;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    int32_t result = RESULT_REFUSED;
    if (remote->SendRequest(CONNECT, data, reply, option) != ERR_NONE || !reply.ReadInt32(result) ||
        result != RESULT_OK) {
        return nullptr;
    }
    return reply.ReadRemoteObject();
}

}  // namespace Tarvo::DataShare
