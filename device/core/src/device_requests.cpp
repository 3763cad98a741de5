// The device's scenario operations: packages, faults, platform events.
#include "common_event_support.h"
#include "device.h"
#include "device_services.h"
#include "input_text.h"
#include "ipc_skeleton.h"
#include "ipc_transport.h"

namespace Tarvo::Emu {
namespace {
constexpr int32_t STATE_FOREGROUND = 2;
}  // namespace

bool Device::Fail(std::string* error, const std::string& reason)
{
    if (error != nullptr) {
        *error = reason;
    }
    return false;
}

bool Device::InstallPackage(const Package& package, std::string* error)
{
    if (!catalog_.Install(package, error)) {
        return false;
    }
    if (IsBooted()) {
        services_->commonEvents->Publish(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, package.bundle,
                                         std::nullopt);
    }
    return true;
}

bool Device::RemovePackage(const std::string& bundle, std::string* error)
{
    if (!catalog_.Remove(bundle)) {
        return Fail(error, "package " + Shown(bundle) + " is not installed");
    }
    services_->commonEvents->Publish(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_REMOVED, bundle, std::nullopt);
    return true;
}

bool Device::IsInstalled(const std::string& bundle) const
{
    return catalog_.FindByBundle(bundle).has_value();
}

void Device::SetAbilityObtainable(int32_t id, bool obtainable)
{
    samgr_->SetObtainable(id, obtainable);
}

void Device::SetServiceManagerUp(bool up)
{
    IPCSkeleton::SetContextObject(up ? sptr<IRemoteObject>(samgr_) : nullptr);
}

void Device::SetSettingsUp(bool up)
{
    services_->settings->SetUp(up);
}

void Device::SetCategoryUp(bool up)
{
    services_->category->SetUp(up);
}

bool Device::RestartAppManager(std::string*)
{
    services_->appManager->Restart();
    return true;
}

bool Device::KillApp(const std::string& bundle, std::string* error)
{
    std::shared_ptr<VirtualProcess> process;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = appProcesses_.find(bundle);
        if (it != appProcesses_.end()) {
            process = it->second;
            appProcesses_.erase(it);
        }
    }
    if (process == nullptr) {
        return IsInstalled(bundle) ? true : Fail(error, "package " + Shown(bundle) + " is not installed");
    }
    process->Kill();  // death notices go out to whoever holds its objects
    return true;
}

bool Device::SetIpcFail(const std::string& bundle, bool fail, std::string* error)
{
    std::shared_ptr<VirtualProcess> process = AppProcess(bundle);
    if (process == nullptr) {
        return Fail(error, "package " + Shown(bundle) + " is not installed");
    }
    IPCTransport::Get().SetTransportFault(process->Pid(), fail);
    return true;
}

std::shared_ptr<VirtualProcess> Device::CallerProcess(const CallerSpec& caller, std::string* error)
{
    switch (caller.kind) {
        case CallerSpec::Kind::SYSTEM:
            return systemCaller_;
        case CallerSpec::Kind::NATIVE:
            return nativeCaller_;
        case CallerSpec::Kind::SHELL:
            return shellCaller_;
        case CallerSpec::Kind::BUNDLE:
            break;
    }
    std::shared_ptr<VirtualProcess> process = AppProcess(caller.bundle);
    if (process == nullptr) {
        Fail(error, "package " + Shown(caller.bundle) + " is not installed");
    }
    return process;
}

bool Device::AppState(const std::string& bundle, int32_t state, std::optional<int32_t> pid, std::optional<bool> focus,
                      std::string*)
{
    int32_t processId = 0;
    if (pid) {
        processId = *pid;
    } else if (auto process = AppProcess(bundle)) {
        processId = process->Pid();
    }
    services_->appManager->NotifyAppState(bundle, processId, state, focus.value_or(state == STATE_FOREGROUND));
    return true;
}

bool Device::PowerMode(int32_t code, std::string*)
{
    services_->commonEvents->Publish(EventFwk::CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED, std::nullopt,
                                     code);
    return true;
}

bool Device::PublishEvent(const std::string& action, const std::optional<std::string>& bundle,
                          std::optional<int32_t> code, std::string*)
{
    services_->commonEvents->Publish(action, bundle, code);
    return true;
}

bool Device::Light(uint32_t type, bool state, std::string*)
{
    services_->power->Light(type, state);  // nothing happens while no callback is registered
    return true;
}

}  // namespace Tarvo::Emu
