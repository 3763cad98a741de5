#ifndef ZEL_MANAGER_ZEL_COMMON_EVENT_SUBSCRIBER_H
#define ZEL_MANAGER_ZEL_COMMON_EVENT_SUBSCRIBER_H

#include "common_event_data.h"
#include "common_event_subscribe_info.h"
#include "common_event_subscriber.h"

namespace Tarvo::Vantel {

// Keeps the game package set current as packages come and go, and passes power-save mode
// changes on to frame-rate control. Runs on the common-event delivery thread.
class ZelCommonEventSubscriber : public EventFwk::CommonEventSubscriber {
public:
    explicit ZelCommonEventSubscriber(const EventFwk::CommonEventSubscribeInfo& info);
    ~ZelCommonEventSubscriber() override = default;

    void OnReceiveEvent(const EventFwk::CommonEventData& data) override;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_COMMON_EVENT_SUBSCRIBER_H
