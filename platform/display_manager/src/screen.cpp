#include "screen.h"

#include "display_manager_client.h"

namespace Tarvo::Vantel {

Screen::Screen(const ScreenInfo& info) : info_(info) {}

DMError Screen::SetResolution(uint32_t width, uint32_t height, uint32_t dpi) const
{
    sptr<IDisplayManagerService> service = GetDisplayManagerService();
    if (service == nullptr) {
        return DMError::DM_ERROR_NULLPTR;
    }
    return service->SetResolution(info_.id, width, height, dpi);
}

}  // namespace Tarvo::Vantel
