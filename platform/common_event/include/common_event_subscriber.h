#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_SUBSCRIBER_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_SUBSCRIBER_H

// Base of a receiver of common events. Subscribed with CommonEventManager; OnReceiveEvent is then
// called, one event at a time and in publishing order, on a thread of the process that subscribed.

#include "common_event_data.h"
#include "common_event_subscribe_info.h"

namespace Tarvo::EventFwk {

class CommonEventSubscriber {
public:
    CommonEventSubscriber() = default;
    explicit CommonEventSubscriber(const CommonEventSubscribeInfo& subscribeInfo);
    virtual ~CommonEventSubscriber() = default;
    CommonEventSubscriber(const CommonEventSubscriber&) = delete;
    CommonEventSubscriber& operator=(const CommonEventSubscriber&) = delete;

    virtual void OnReceiveEvent(const CommonEventData& data) = 0;

    const CommonEventSubscribeInfo& GetSubscribeInfo() const { return subscribeInfo_; }

private:
    const CommonEventSubscribeInfo subscribeInfo_{};
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_SUBSCRIBER_H
