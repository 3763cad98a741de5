#ifndef TARVO_RENDER_SERVICE_RENDER_SERVICE_PROXY_H
#define TARVO_RENDER_SERVICE_RENDER_SERVICE_PROXY_H

#include "i_render_service.h"
#include "iremote_proxy.h"

namespace Tarvo::Vantel {

// Client side of IRenderService. Notices are fire-and-forget: a notice that cannot be written or
// sent is dropped without a word.
class RenderServiceProxy : public IRemoteProxy<IRenderService> {
public:
    explicit RenderServiceProxy(const sptr<IRemoteObject>& impl);

    void NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList) override;
    void NotifyRefreshRateEvent(const EventInfo& eventInfo) override;
    void NotifyLightFactorStatus(bool isSafe) override;

private:
    void Send(uint32_t code, MessageParcel& data);
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_RENDER_SERVICE_RENDER_SERVICE_PROXY_H
