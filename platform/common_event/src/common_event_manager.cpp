#include "common_event_manager.h"

#include "common_event_client.h"

namespace Tarvo::EventFwk {

bool CommonEventManager::SubscribeCommonEvent(const std::shared_ptr<CommonEventSubscriber>& subscriber)
{
    return CommonEventClient::GetInstance().Subscribe(subscriber);
}

bool CommonEventManager::UnSubscribeCommonEvent(const std::shared_ptr<CommonEventSubscriber>& subscriber)
{
    return CommonEventClient::GetInstance().Unsubscribe(subscriber);
}

bool CommonEventManager::PublishCommonEvent(const CommonEventData& data)
{
    return CommonEventClient::GetInstance().Publish(data);
}

}  // namespace Tarvo::EventFwk
