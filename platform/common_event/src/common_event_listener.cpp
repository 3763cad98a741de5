#include "common_event_listener.h"

#include <utility>

#include "ipc_types.h"

namespace Tarvo::EventFwk {

CommonEventListener::CommonEventListener(std::shared_ptr<CommonEventSubscriber> subscriber)
    : subscriber_(std::move(subscriber))
{
}

int32_t CommonEventListener::NotifyEvent(const CommonEventData& data)
{
    std::shared_ptr<CommonEventSubscriber> subscriber;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        subscriber = subscriber_;
    }
    if (subscriber == nullptr) {
        return ERR_NONE;
    }
    // The subscriber is the application's code; whatever it throws stays on this side.
    try {
        subscriber->OnReceiveEvent(data);
    } catch (...) {
    }
    return ERR_NONE;
}

int CommonEventListener::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                         MessageOption& option)
{
    if (code != NOTIFY_EVENT) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    CommonEventData event;
    if (data.ReadInterfaceToken() != GetDescriptor() || !CommonEventData::Unmarshalling(data, event)) {
        return ERR_INVALID_VALUE;
    }
    return NotifyEvent(event);
}

void CommonEventListener::Stop()
{
    std::shared_ptr<CommonEventSubscriber> released;  // dropped outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    released = std::move(subscriber_);
}

}  // namespace Tarvo::EventFwk
