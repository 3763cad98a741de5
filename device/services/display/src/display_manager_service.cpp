#include "display_manager_service.h"

#include "display_manager_service_impl.h"
#include "i_display_manager_service.h"

namespace Tarvo::Emu {

DisplayManagerService::DisplayManagerService(DeviceContext& ctx) : ctx_(ctx) {}

void DisplayManagerService::Start()
{
    process_ = ctx_.MakeServiceProcess("display_manager_service");
    {
        ScopedProcess scope(process_);
        stub_ = new DisplayManagerServiceImpl(ctx_.GetTrace(), {0, INITIAL_WIDTH, INITIAL_HEIGHT, INITIAL_DENSITY});
    }
    ctx_.AddSystemAbility(Vantel::IDisplayManagerService::DISPLAY_MANAGER_SERVICE_SA_ID, stub_);
}

}  // namespace Tarvo::Emu
