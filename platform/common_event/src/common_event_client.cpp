#include "common_event_client.h"

#include "ipc_types.h"
#include "system_ability_cache.h"

namespace Tarvo::EventFwk {

CommonEventClient& CommonEventClient::GetInstance()
{
    // Never destroyed: IPC threads may still deliver to listeners while statics are torn down.
    static CommonEventClient* instance = new CommonEventClient();
    return *instance;
}

sptr<ICommonEventService> CommonEventClient::GetService()
{
    // Never destroyed, as the client itself.
    static auto* client = new SystemAbilityClient<ICommonEventService>(COMMON_EVENT_SERVICE_ID);
    sptr<ICommonEventService> service = client->Get();
    sptr<IRemoteObject> object = service != nullptr ? service->AsObject() : nullptr;
    return object != nullptr && !object->IsObjectDead() ? service : nullptr;
}

bool CommonEventClient::Subscribe(const std::shared_ptr<CommonEventSubscriber>& subscriber)
{
    if (subscriber == nullptr || subscriber->GetSubscribeInfo().GetMatchingSkills().CountEvent() == 0) {
        return false;
    }
    // Made on the calling thread, so the subscribing process owns it and events run there.
    sptr<CommonEventListener> listener = new CommonEventListener(subscriber);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!listeners_.emplace(subscriber.get(), listener).second) {
            return false;
        }
    }
    sptr<ICommonEventService> service = GetService();
    int32_t result =
        service != nullptr
            ? service->Subscribe(subscriber->GetSubscribeInfo().GetMatchingSkills().GetEvents(), listener->AsObject())
            : ERR_DEAD_OBJECT;
    if (result == ICommonEventService::RESULT_OK) {
        return true;
    }
    listener->Stop();
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = listeners_.find(subscriber.get());
    if (it != listeners_.end() && it->second == listener) {
        listeners_.erase(it);
    }
    return false;
}

bool CommonEventClient::Unsubscribe(const std::shared_ptr<CommonEventSubscriber>& subscriber)
{
    sptr<CommonEventListener> listener;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = listeners_.find(subscriber.get());
        if (subscriber == nullptr || it == listeners_.end()) {
            return false;
        }
        listener = it->second;
        listeners_.erase(it);
    }
    // Stopped whatever the service says: the caller asked to hear nothing more.
    listener->Stop();
    sptr<ICommonEventService> service = GetService();
    return service != nullptr && service->Unsubscribe(listener->AsObject()) == ICommonEventService::RESULT_OK;
}

bool CommonEventClient::Publish(const CommonEventData& data)
{
    if (data.GetWant().GetAction().empty()) {
        return false;
    }
    sptr<ICommonEventService> service = GetService();
    return service != nullptr && service->Publish(data) == ICommonEventService::RESULT_OK;
}

}  // namespace Tarvo::EventFwk
