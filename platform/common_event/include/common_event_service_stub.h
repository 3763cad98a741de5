#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_SERVICE_STUB_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_SERVICE_STUB_H

// Base of a common-event service: reads the requests of i_common_event_service.h and answers them
// with the implementation's results. A request without the interface token or with missing fields
// is answered ERR_INVALID_VALUE without reaching the implementation.

#include "i_common_event_service.h"
#include "iremote_stub.h"

namespace Tarvo::EventFwk {

class CommonEventServiceStub : public IRemoteStub<ICommonEventService> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    int HandleSubscribe(MessageParcel& data, MessageParcel& reply);
    int HandleUnsubscribe(MessageParcel& data, MessageParcel& reply);
    int HandlePublish(MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_SERVICE_STUB_H
