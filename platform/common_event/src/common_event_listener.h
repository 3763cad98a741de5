#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_LISTENER_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_LISTENER_H

#include <memory>
#include <mutex>

#include "common_event_subscriber.h"
#include "i_common_event_listener.h"
#include "iremote_stub.h"

namespace Tarvo::EventFwk {

// A subscriber's listener, owned by the process that subscribed: NOTIFY_EVENT requests run on that
// process's IPC threads and reach the subscriber there, until Stop().
class CommonEventListener : public IRemoteStub<ICommonEventListener> {
public:
    explicit CommonEventListener(std::shared_ptr<CommonEventSubscriber> subscriber);

    int32_t NotifyEvent(const CommonEventData& data) override;
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

    // Lets go of the subscriber; later events are dropped.
    void Stop();

private:
    std::mutex mutex_;
    std::shared_ptr<CommonEventSubscriber> subscriber_;
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_LISTENER_H
