#include "display_manager_client.h"

#include "system_ability_cache.h"

namespace Tarvo::Vantel {

sptr<IDisplayManagerService> GetDisplayManagerService()
{
    // Never destroyed: the kept proxies must not go during static destruction.
    static auto* client =
        new SystemAbilityClient<IDisplayManagerService>(IDisplayManagerService::DISPLAY_MANAGER_SERVICE_SA_ID);
    return client->Get();
}

}  // namespace Tarvo::Vantel
