#ifndef TARVO_COMMON_EVENT_I_COMMON_EVENT_SERVICE_H
#define TARVO_COMMON_EVENT_I_COMMON_EVENT_SERVICE_H

// The common-event service: keeps subscriptions and delivers each published event, one-way, to
// the listener (i_common_event_listener.h) of every subscription whose events include its action.
//
// Wire format (synchronous, after the interface token; every reply is int32 result):
//   SUBSCRIBE:    string vector events, listener object
//   UNSUBSCRIBE:  listener object
//   PUBLISH:      common event data (common_event_data.h)

#include <cstdint>
#include <string>
#include <vector>

#include "common_event_data.h"
#include "iremote_broker.h"
#include "iremote_object.h"

namespace Tarvo::EventFwk {

constexpr int32_t COMMON_EVENT_SERVICE_ID = 3299;

class ICommonEventService : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.eventfwk.ICommonEventService");

    enum Code : uint32_t {
        SUBSCRIBE = 1,
        UNSUBSCRIBE = 2,
        PUBLISH = 3,
    };
    enum Result : int32_t {
        RESULT_OK = 0,
        // Null listener, no events, no action.
        RESULT_INVALID_ARGUMENT = 1,
        RESULT_ALREADY_SUBSCRIBED = 2,
        RESULT_NOT_SUBSCRIBED = 3,
    };

    // A result above, or a transport code when the service could not be reached.
    virtual int32_t Subscribe(const std::vector<std::string>& events, const sptr<IRemoteObject>& listener) = 0;
    virtual int32_t Unsubscribe(const sptr<IRemoteObject>& listener) = 0;
    virtual int32_t Publish(const CommonEventData& data) = 0;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_I_COMMON_EVENT_SERVICE_H
