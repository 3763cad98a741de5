#include "render_service.h"

#include "i_render_service.h"
#include "render_service_impl.h"

namespace Tarvo::Emu {

RenderService::RenderService(DeviceContext& ctx) : ctx_(ctx) {}

void RenderService::Start()
{
    stub_ = ctx_.LaunchService<RenderServiceImpl>("render_service", Vantel::IRenderService::RENDER_SERVICE_ID, process_,
                                                  ctx_.GetTrace());
}

}  // namespace Tarvo::Emu
