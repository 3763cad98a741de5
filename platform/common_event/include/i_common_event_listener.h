#ifndef TARVO_COMMON_EVENT_I_COMMON_EVENT_LISTENER_H
#define TARVO_COMMON_EVENT_I_COMMON_EVENT_LISTENER_H

// The object a subscriber's process hands to the common-event service; the service sends it the
// matching events. iface_cast of a listener object gives a proxy that sends NOTIFY_EVENT.
//
// Wire format (one-way, after the interface token):
//   NOTIFY_EVENT: common event data (common_event_data.h)

#include <cstdint>

#include "common_event_data.h"
#include "iremote_broker.h"

namespace Tarvo::EventFwk {

class ICommonEventListener : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.eventfwk.ICommonEventListener");

    enum Code : uint32_t { NOTIFY_EVENT = 1 };

    // 0 once the event is on its way (or handled, for a listener of the caller's own process).
    virtual int32_t NotifyEvent(const CommonEventData& data) = 0;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_I_COMMON_EVENT_LISTENER_H
