#include "common_event_listener_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::EventFwk {
namespace {
const BrokerDelegator<CommonEventListenerProxy> delegator;
}

CommonEventListenerProxy::CommonEventListenerProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<ICommonEventListener>(impl)
{
}

int32_t CommonEventListenerProxy::NotifyEvent(const CommonEventData& event)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !event.Marshalling(data)) {
        return ERR_INVALID_VALUE;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC);
    return remote->SendRequest(NOTIFY_EVENT, data, reply, option);
}

}  // namespace Tarvo::EventFwk
