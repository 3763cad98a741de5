#include "display_manager_client.h"

#include "iservice_registry.h"

namespace Tarvo::Vantel {

sptr<IDisplayManagerService> GetDisplayManagerService()
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        return nullptr;
    }
    sptr<IRemoteObject> object = samgr->GetSystemAbility(IDisplayManagerService::DISPLAY_MANAGER_SERVICE_SA_ID);
    return object != nullptr ? iface_cast<IDisplayManagerService>(object) : nullptr;
}

}  // namespace Tarvo::Vantel
