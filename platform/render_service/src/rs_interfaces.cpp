#include "rs_interfaces.h"

#include "i_render_service.h"
#include "system_ability_cache.h"

namespace Tarvo::Vantel {
namespace {
// Null while the service manager or the render service cannot be reached.
sptr<IRenderService> RenderService()
{
    // Never destroyed: the kept proxies must not go during static destruction.
    static auto* client = new SystemAbilityClient<IRenderService>(IRenderService::RENDER_SERVICE_ID);
    return client->Get();
}
}  // namespace

RSInterfaces& RSInterfaces::GetInstance()
{
    static RSInterfaces instance;
    return instance;
}

void RSInterfaces::NotifyPackageEvent(uint32_t listSize, const std::vector<std::string>& packageList)
{
    if (sptr<IRenderService> service = RenderService()) {
        service->NotifyPackageEvent(listSize, packageList);
    }
}

void RSInterfaces::NotifyRefreshRateEvent(const EventInfo& eventInfo)
{
    if (sptr<IRenderService> service = RenderService()) {
        service->NotifyRefreshRateEvent(eventInfo);
    }
}

void RSInterfaces::NotifyLightFactorStatus(bool isSafe)
{
    if (sptr<IRenderService> service = RenderService()) {
        service->NotifyLightFactorStatus(isSafe);
    }
}

}  // namespace Tarvo::Vantel
