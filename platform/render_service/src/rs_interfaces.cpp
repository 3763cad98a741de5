#include "rs_interfaces.h"

#include "i_render_service.h"
#include "iservice_registry.h"

namespace Tarvo::Vantel {
namespace {
// Null while the service manager or the render service cannot be reached.
sptr<IRenderService> RenderService()
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        return nullptr;
    }
    sptr<IRemoteObject> object = samgr->GetSystemAbility(IRenderService::RENDER_SERVICE_ID);
    return object != nullptr ? iface_cast<IRenderService>(object) : nullptr;
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
