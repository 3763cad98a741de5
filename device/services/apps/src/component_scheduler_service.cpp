#include "component_scheduler_service.h"

#include "component_sched_interface.h"
#include "component_scheduler_stub.h"

namespace Tarvo::Emu {

static_assert(ComponentSchedulerService::SA_ID == ComponentScheduler::COMPONENT_SCHED_SA_ID);

ComponentSchedulerService::ComponentSchedulerService(DeviceContext& ctx) : ctx_(ctx) {}

ComponentSchedulerService::~ComponentSchedulerService() = default;

void ComponentSchedulerService::Start()
{
    if (process_ != nullptr) {
        return;
    }
    stub_ = ctx_.LaunchService<ComponentSchedulerStub>("component_scheduler", SA_ID, process_, ctx_.Catalog());
}

}  // namespace Tarvo::Emu
