#include "common_event_service_stub.h"

#include "ipc_types.h"

namespace Tarvo::EventFwk {

int CommonEventServiceStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                            MessageOption& option)
{
    if (code != SUBSCRIBE && code != UNSUBSCRIBE && code != PUBLISH) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    switch (code) {
        case SUBSCRIBE:
            return HandleSubscribe(data, reply);
        case UNSUBSCRIBE:
            return HandleUnsubscribe(data, reply);
        default:
            return HandlePublish(data, reply);
    }
}

int CommonEventServiceStub::HandleSubscribe(MessageParcel& data, MessageParcel& reply)
{
    std::vector<std::string> events;
    if (!data.ReadStringVector(&events)) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> listener = data.ReadRemoteObject();
    if (listener == nullptr) {
        return ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(Subscribe(events, listener)) ? ERR_NONE : ERR_INVALID_VALUE;
}

int CommonEventServiceStub::HandleUnsubscribe(MessageParcel& data, MessageParcel& reply)
{
    sptr<IRemoteObject> listener = data.ReadRemoteObject();
    if (listener == nullptr) {
        return ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(Unsubscribe(listener)) ? ERR_NONE : ERR_INVALID_VALUE;
}

int CommonEventServiceStub::HandlePublish(MessageParcel& data, MessageParcel& reply)
{
    CommonEventData event;
    if (!CommonEventData::Unmarshalling(data, event)) {
        return ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(Publish(event)) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::EventFwk
