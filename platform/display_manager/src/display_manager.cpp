#include "display_manager.h"

#include "display_manager_client.h"

namespace Tarvo::Vantel {

DisplayManager& DisplayManager::GetInstance()
{
    static DisplayManager instance;
    return instance;
}

DisplayId DisplayManager::GetDefaultDisplayId()
{
    sptr<IDisplayManagerService> service = GetDisplayManagerService();
    return service != nullptr ? service->GetDefaultDisplayId() : DISPLAY_ID_INVALID;
}

}  // namespace Tarvo::Vantel
