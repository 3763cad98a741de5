#include "common_event_service_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::EventFwk {
namespace {
const BrokerDelegator<CommonEventServiceProxy> delegator;
}

CommonEventServiceProxy::CommonEventServiceProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<ICommonEventService>(impl)
{
}

int32_t CommonEventServiceProxy::Subscribe(const std::vector<std::string>& events, const sptr<IRemoteObject>& listener)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteStringVector(events) ||
        !data.WriteRemoteObject(listener)) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(SUBSCRIBE, data);
}

int32_t CommonEventServiceProxy::Unsubscribe(const sptr<IRemoteObject>& listener)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteRemoteObject(listener)) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(UNSUBSCRIBE, data);
}

int32_t CommonEventServiceProxy::Publish(const CommonEventData& event)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !event.Marshalling(data)) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(PUBLISH, data);
}

// The transport's error, or else the service's int32 result.
int32_t CommonEventServiceProxy::CallForResult(uint32_t code, MessageParcel& data)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    int32_t status = remote->SendRequest(code, data, reply, option);
    if (status != ERR_NONE) {
        return status;
    }
    int32_t result = 0;
    return reply.ReadInt32(result) ? result : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::EventFwk
