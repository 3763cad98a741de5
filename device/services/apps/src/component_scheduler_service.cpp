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
    process_ = ctx_.MakeServiceProcess("component_scheduler");
    {
        ScopedProcess scope(process_);
        stub_ = new ComponentSchedulerStub(ctx_.Catalog());
    }
    ctx_.AddSystemAbility(SA_ID, stub_);
}

}  // namespace Tarvo::Emu
