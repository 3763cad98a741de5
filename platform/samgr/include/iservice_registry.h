#ifndef TARVO_SAMGR_ISERVICE_REGISTRY_H
#define TARVO_SAMGR_ISERVICE_REGISTRY_H

#include "if_system_ability_manager.h"

namespace Tarvo {

class SystemAbilityManagerClient {
public:
    static SystemAbilityManagerClient& GetInstance();
    // The service manager as seen from the calling thread's process; null while none is reachable.
    // Not cached: the service manager may come and go.
    sptr<ISystemAbilityManager> GetSystemAbilityManager();

private:
    SystemAbilityManagerClient() = default;
};

}  // namespace Tarvo

#endif  // TARVO_SAMGR_ISERVICE_REGISTRY_H
