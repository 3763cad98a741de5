#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_CLIENT_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_CLIENT_H

#include <map>
#include <memory>
#include <mutex>

#include "common_event_listener.h"
#include "common_event_subscriber.h"
#include "i_common_event_service.h"

namespace Tarvo::EventFwk {

// What CommonEventManager does (see its contract): keeps one listener per subscribed subscriber,
// for all virtual processes of the real process.
class CommonEventClient {
public:
    static CommonEventClient& GetInstance();

    bool Subscribe(const std::shared_ptr<CommonEventSubscriber>& subscriber);
    bool Unsubscribe(const std::shared_ptr<CommonEventSubscriber>& subscriber);
    bool Publish(const CommonEventData& data);

private:
    CommonEventClient() = default;
    // The service as seen from the calling thread's process; null when unreachable.
    static sptr<ICommonEventService> GetService();

    std::mutex mutex_;
    std::map<const CommonEventSubscriber*, sptr<CommonEventListener>> listeners_;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_CLIENT_H
