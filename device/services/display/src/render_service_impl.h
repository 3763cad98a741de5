#ifndef ZEL_DEVICE_SERVICES_DISPLAY_RENDER_SERVICE_IMPL_H
#define ZEL_DEVICE_SERVICES_DISPLAY_RENDER_SERVICE_IMPL_H

#include "render_service_stub.h"
#include "trace.h"

namespace Tarvo::Emu {

// The render service's object: traces each notice (RenderService names the events).
class RenderServiceImpl : public Vantel::RenderServiceStub {
public:
    explicit RenderServiceImpl(Trace& trace);

    void NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList) override;
    void NotifyRefreshRateEvent(const Vantel::EventInfo& eventInfo) override;
    void NotifyLightFactorStatus(bool isSafe) override;

private:
    Trace& trace_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_RENDER_SERVICE_IMPL_H
