#include "display_manager_service.h"

#include "display_manager_service_impl.h"
#include "i_display_manager_service.h"

namespace Tarvo::Emu {

DisplayManagerService::DisplayManagerService(DeviceContext& ctx) : ctx_(ctx) {}

void DisplayManagerService::Start()
{
    const Vantel::ScreenInfo initial{0, INITIAL_WIDTH, INITIAL_HEIGHT, INITIAL_DENSITY};
    stub_ = ctx_.LaunchService<DisplayManagerServiceImpl>("display_manager_service",
                                                          Vantel::IDisplayManagerService::DISPLAY_MANAGER_SERVICE_SA_ID,
                                                          process_, ctx_.GetTrace(), initial);
}

}  // namespace Tarvo::Emu
