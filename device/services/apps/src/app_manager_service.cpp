#include "app_manager_service.h"

#include "app_manager.h"
#include "app_mgr_interface.h"

namespace Tarvo::Emu {

static_assert(AppManagerService::SA_ID == AppExecFwk::APP_MGR_SERVICE_ID);

AppManagerService::AppManagerService(DeviceContext& ctx) : ctx_(ctx) {}

AppManagerService::~AppManagerService() = default;

void AppManagerService::Start()
{
    if (process_ != nullptr) {
        return;
    }
    manager_ = ctx_.LaunchService<AppManager>("app_manager", SA_ID, process_);
}

bool AppManagerService::NotifyAppState(const std::string& bundle, int32_t pid, int32_t state, bool focus)
{
    if (manager_ == nullptr || !process_->IsAlive()) {
        return false;
    }
    AppExecFwk::AppStateData data;
    data.bundleName = bundle;
    data.pid = pid;
    data.state = state;
    data.isFocused = focus;
    if (auto package = ctx_.Catalog().FindByBundle(bundle)) {
        data.uid = package->uid;
    }
    ScopedProcess scope(process_);
    manager_->NotifyForegroundApplicationChanged(data);
    return true;
}

void AppManagerService::Restart()
{
    std::shared_ptr<VirtualProcess> oldProcess = std::move(process_);
    sptr<AppManager> oldManager = std::move(manager_);
    // The new manager is registered before anyone hears of the old one's death, as a restarted
    // service is by the time its holders react.
    Start();
    if (oldProcess != nullptr) {
        oldProcess->Kill();
    }
    if (oldManager != nullptr) {
        oldManager->Clear();
    }
}

size_t AppManagerService::ObserverCount() const
{
    return manager_ != nullptr ? manager_->ObserverCount() : 0;
}

}  // namespace Tarvo::Emu
