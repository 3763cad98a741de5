#include "common_event_subscriber.h"

namespace Tarvo::EventFwk {

CommonEventSubscriber::CommonEventSubscriber(const CommonEventSubscribeInfo& subscribeInfo)
    : subscribeInfo_(subscribeInfo)
{
}

}  // namespace Tarvo::EventFwk
