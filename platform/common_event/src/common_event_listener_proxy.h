#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_LISTENER_PROXY_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_LISTENER_PROXY_H

#include "i_common_event_listener.h"
#include "iremote_proxy.h"

namespace Tarvo::EventFwk {

// Sends NOTIFY_EVENT one-way (i_common_event_listener.h).
class CommonEventListenerProxy : public IRemoteProxy<ICommonEventListener> {
public:
    explicit CommonEventListenerProxy(const sptr<IRemoteObject>& impl);

    int32_t NotifyEvent(const CommonEventData& data) override;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_LISTENER_PROXY_H
