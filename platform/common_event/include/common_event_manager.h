#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_MANAGER_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_MANAGER_H

// The client of the common-event service (obtained from the service manager under
// COMMON_EVENT_SERVICE_ID).
//
// Contract:
//  - SubscribeCommonEvent registers the subscriber's events with the service together with a
//    listener object made in the calling thread's process; events are then delivered on threads of
//    that process. False for a null subscriber, one without events, one already subscribed, or when
//    the service is unreachable or refuses (the subscriber is then not subscribed).
//  - UnSubscribeCommonEvent: false for a subscriber that is not subscribed. Otherwise the
//    subscriber receives nothing more from then on, and the result tells whether the service
//    could be told.
//  - PublishCommonEvent: true once the service accepted the event for delivery; false for an
//    event without action or an unreachable service.
//  - Nothing here logs: the caller decides what a failure means.

#include <memory>

#include "common_event_data.h"
#include "common_event_subscriber.h"

namespace Tarvo::EventFwk {

class CommonEventManager {
public:
    static bool SubscribeCommonEvent(const std::shared_ptr<CommonEventSubscriber>& subscriber);
    static bool UnSubscribeCommonEvent(const std::shared_ptr<CommonEventSubscriber>& subscriber);
    static bool PublishCommonEvent(const CommonEventData& data);
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_MANAGER_H
