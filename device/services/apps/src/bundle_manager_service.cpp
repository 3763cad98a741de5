#include "bundle_manager_service.h"

#include "bundle_manager_stub.h"
#include "bundle_mgr_interface.h"

namespace Tarvo::Emu {

static_assert(BundleManagerService::SA_ID == AppExecFwk::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID);

BundleManagerService::BundleManagerService(DeviceContext& ctx) : ctx_(ctx) {}

BundleManagerService::~BundleManagerService() = default;

void BundleManagerService::Start()
{
    if (process_ != nullptr) {
        return;
    }
    stub_ = ctx_.LaunchService<BundleManagerStub>("bundle_manager", SA_ID, process_, ctx_.Catalog());
}

}  // namespace Tarvo::Emu
