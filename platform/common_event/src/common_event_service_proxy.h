#ifndef TARVO_COMMON_EVENT_COMMON_EVENT_SERVICE_PROXY_H
#define TARVO_COMMON_EVENT_COMMON_EVENT_SERVICE_PROXY_H

#include "i_common_event_service.h"
#include "iremote_proxy.h"

namespace Tarvo::EventFwk {

// Sends the requests of i_common_event_service.h; a transport failure comes back as its code.
class CommonEventServiceProxy : public IRemoteProxy<ICommonEventService> {
public:
    explicit CommonEventServiceProxy(const sptr<IRemoteObject>& impl);

    int32_t Subscribe(const std::vector<std::string>& events, const sptr<IRemoteObject>& listener) override;
    int32_t Unsubscribe(const sptr<IRemoteObject>& listener) override;
    int32_t Publish(const CommonEventData& data) override;

private:
    int32_t CallForResult(uint32_t code, MessageParcel& data);
};

}  // namespace Tarvo::EventFwk

#endif  // TARVO_COMMON_EVENT_COMMON_EVENT_SERVICE_PROXY_H
