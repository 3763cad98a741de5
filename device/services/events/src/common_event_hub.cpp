#include "common_event_hub.h"

#include <algorithm>

#include "i_common_event_listener.h"

namespace Tarvo::Emu {

using EventFwk::ICommonEventService;

int32_t CommonEventHub::Subscribe(const std::vector<std::string>& events, const sptr<IRemoteObject>& listener)
{
    if (listener == nullptr || events.empty()) {
        return ICommonEventService::RESULT_INVALID_ARGUMENT;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    auto same = [&](const Subscription& subscription) { return subscription.listener == listener; };
    if (std::any_of(subscriptions_.begin(), subscriptions_.end(), same)) {
        return ICommonEventService::RESULT_ALREADY_SUBSCRIBED;
    }
    subscriptions_.push_back({listener, events});
    return ICommonEventService::RESULT_OK;
}

int32_t CommonEventHub::Unsubscribe(const sptr<IRemoteObject>& listener)
{
    std::vector<Subscription> removed;  // released outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = std::find_if(subscriptions_.begin(), subscriptions_.end(),
                           [&](const Subscription& subscription) { return subscription.listener == listener; });
    if (it == subscriptions_.end()) {
        return ICommonEventService::RESULT_NOT_SUBSCRIBED;
    }
    removed.push_back(std::move(*it));
    subscriptions_.erase(it);
    return ICommonEventService::RESULT_OK;
}

std::vector<sptr<IRemoteObject>> CommonEventHub::TakeRecipients(const std::string& action)
{
    std::vector<sptr<IRemoteObject>> recipients;
    std::vector<Subscription> dead;  // released outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = subscriptions_.begin(); it != subscriptions_.end();) {
        if (it->listener->IsObjectDead()) {
            dead.push_back(std::move(*it));
            it = subscriptions_.erase(it);
            continue;
        }
        if (std::find(it->events.begin(), it->events.end(), action) != it->events.end()) {
            recipients.push_back(it->listener);
        }
        ++it;
    }
    return recipients;
}

int32_t CommonEventHub::Publish(const EventFwk::CommonEventData& data)
{
    if (data.GetWant().GetAction().empty()) {
        return ICommonEventService::RESULT_INVALID_ARGUMENT;
    }
    for (const sptr<IRemoteObject>& object : TakeRecipients(data.GetWant().GetAction())) {
        sptr<EventFwk::ICommonEventListener> listener = iface_cast<EventFwk::ICommonEventListener>(object);
        if (listener != nullptr) {
            listener->NotifyEvent(data);
        }
    }
    return ICommonEventService::RESULT_OK;
}

size_t CommonEventHub::SubscriptionCount() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return subscriptions_.size();
}

}  // namespace Tarvo::Emu
