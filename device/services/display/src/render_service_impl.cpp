#include "render_service_impl.h"

namespace Tarvo::Emu {

RenderServiceImpl::RenderServiceImpl(Trace& trace) : trace_(trace) {}

void RenderServiceImpl::NotifyPackageEvent(uint32_t, const std::vector<std::string>& packageList)
{
    trace_.Emit("mox.package", {{"pkgs", packageList}});
}

void RenderServiceImpl::NotifyRefreshRateEvent(const Vantel::EventInfo& eventInfo)
{
    trace_.Emit("mox.refresh", {{"name", eventInfo.eventName},
                                {"status", eventInfo.eventStatus},
                                {"min", static_cast<int64_t>(eventInfo.minRefreshRate)},
                                {"max", static_cast<int64_t>(eventInfo.maxRefreshRate)},
                                {"desc", eventInfo.description}});
}

void RenderServiceImpl::NotifyLightFactorStatus(bool isSafe)
{
    trace_.Emit("mox.light", {{"status", isSafe}});
}

}  // namespace Tarvo::Emu
