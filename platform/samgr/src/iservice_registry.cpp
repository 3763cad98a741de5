#include "iservice_registry.h"

#include "ipc_skeleton.h"
#include "system_ability_manager_proxy.h"

namespace Tarvo {

SystemAbilityManagerClient& SystemAbilityManagerClient::GetInstance()
{
    static SystemAbilityManagerClient instance;
    return instance;
}

sptr<ISystemAbilityManager> SystemAbilityManagerClient::GetSystemAbilityManager()
{
    sptr<IRemoteObject> context = IPCSkeleton::GetContextObject();
    if (context == nullptr || context->IsObjectDead()) {
        return nullptr;
    }
    return iface_cast<ISystemAbilityManager>(context);
}

}  // namespace Tarvo
