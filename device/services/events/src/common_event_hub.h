#ifndef ZEL_DEVICE_COMMON_EVENT_HUB_H
#define ZEL_DEVICE_COMMON_EVENT_HUB_H

#include <mutex>
#include <string>
#include <vector>

#include "common_event_service_stub.h"

namespace Tarvo::Emu {

// The common-event service's object: the subscriptions, and the delivery of each published event,
// one-way, to every listener whose events include its action. A listener whose process died is
// forgotten at the next publication.
class CommonEventHub : public EventFwk::CommonEventServiceStub {
public:
    int32_t Subscribe(const std::vector<std::string>& events, const sptr<IRemoteObject>& listener) override;
    int32_t Unsubscribe(const sptr<IRemoteObject>& listener) override;
    // Call from the hub's own process: deliveries go out as that process.
    int32_t Publish(const EventFwk::CommonEventData& data) override;

    size_t SubscriptionCount() const;

private:
    struct Subscription {
        sptr<IRemoteObject> listener;
        std::vector<std::string> events;
    };
    // The listeners the action goes to; forgets dead ones.
    std::vector<sptr<IRemoteObject>> TakeRecipients(const std::string& action);

    mutable std::mutex mutex_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_COMMON_EVENT_HUB_H
