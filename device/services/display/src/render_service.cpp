#include "render_service.h"

#include "i_render_service.h"
#include "render_service_impl.h"

namespace Tarvo::Emu {

RenderService::RenderService(DeviceContext& ctx) : ctx_(ctx) {}

void RenderService::Start()
{
    process_ = ctx_.MakeServiceProcess("render_service");
    {
        ScopedProcess scope(process_);
        stub_ = new RenderServiceImpl(ctx_.GetTrace());
    }
    ctx_.AddSystemAbility(Vantel::IRenderService::RENDER_SERVICE_ID, stub_);
}

}  // namespace Tarvo::Emu
