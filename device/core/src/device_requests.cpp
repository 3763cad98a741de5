// The device's scenario operations: packages, faults, requests to the service, platform events.
#include "common_event_support.h"
#include "device.h"
#include "device_services.h"
#include "ipc_driver.h"
#include "ipc_skeleton.h"
#include "iservice_registry.h"
#include "zel_manager_proxy.h"

namespace Tarvo::Emu {
namespace {
constexpr int32_t STATE_FOREGROUND = 2;

bool Fail(std::string* error, const std::string& reason)
{
    if (error != nullptr) {
        *error = reason;
    }
    return false;
}
}  // namespace

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
        return Fail(error, "package " + bundle + " is not installed");
    }
    services_->commonEvents->Publish(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_REMOVED, bundle,
                                     std::nullopt);
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
        return IsInstalled(bundle) ? true : Fail(error, "package " + bundle + " is not installed");
    }
    process->Kill();  // death notices go out to whoever holds its objects
    return true;
}

bool Device::SetIpcFail(const std::string& bundle, bool fail, std::string* error)
{
    std::shared_ptr<VirtualProcess> process = AppProcess(bundle);
    if (process == nullptr) {
        return Fail(error, "package " + bundle + " is not installed");
    }
    IPCDriver::GetInstance().SetTransportFault(process->Pid(), fail);
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
        Fail(error, "package " + caller.bundle + " is not installed");
    }
    return process;
}

// Looked up anew each time, from the calling thread's process, as a client would.
sptr<IRemoteObject> Device::ServiceObject()
{
    sptr<ISystemAbilityManager> manager = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    return manager != nullptr ? manager->GetSystemAbility(ZEL_MANAGER_SERVICE_ID) : nullptr;
}

bool Device::SendScene(int line, const CallerSpec& caller, const std::string& pkg, const std::string& scene,
                       uint32_t state, std::string* error)
{
    auto process = CallerProcess(caller, error);
    if (process == nullptr) {
        return false;
    }
    ScopedProcess scope(process);
    IPCDriver::ScopedTag tag(static_cast<uint64_t>(line));
    Vantel::ZelManagerProxy(ServiceObject()).SetScene(pkg, scene, state);
    return true;
}

bool Device::SendResolution(int line, const CallerSpec& caller, int32_t mode, int32_t flag, std::string* error)
{
    auto process = CallerProcess(caller, error);
    if (process == nullptr) {
        return false;
    }
    ScopedProcess scope(process);
    IPCDriver::ScopedTag tag(static_cast<uint64_t>(line));
    Vantel::ZelManagerProxy(ServiceObject()).ChangeResolutionMode(mode, flag);
    return true;
}

// Built by hand: the proxy takes a map, which would sort the pairs and merge repeated keys.
bool Device::SendThermal(int line, const CallerSpec& caller, const std::vector<std::pair<uint32_t, uint32_t>>& map,
                         std::string* error)
{
    auto process = CallerProcess(caller, error);
    if (process == nullptr) {
        return false;
    }
    ScopedProcess scope(process);
    IPCDriver::ScopedTag tag(static_cast<uint64_t>(line));
    sptr<IRemoteObject> service = ServiceObject();
    if (service == nullptr) {
        return true;  // nobody to ask: as a client whose service is not ready
    }
    std::vector<uint32_t> keys;
    std::vector<uint32_t> values;
    for (const auto& [key, value] : map) {
        keys.push_back(key);
        values.push_back(value);
    }
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    data.WriteInterfaceToken(Vantel::IZelManager::GetDescriptor());
    data.WriteUInt32Vector(keys);
    data.WriteUInt32Vector(values);
    service->SendRequest(static_cast<uint32_t>(Vantel::ZelManagerInterfaceCode::SET_THERMAL_POLICY), data, reply,
                         option);
    return true;
}

bool Device::SendGameFps(int line, const CallerSpec& caller, const std::string& pkg, uint32_t fps,
                         std::string* error)
{
    auto process = CallerProcess(caller, error);
    if (process == nullptr) {
        return false;
    }
    ScopedProcess scope(process);
    IPCDriver::ScopedTag tag(static_cast<uint64_t>(line));
    Vantel::ZelManagerProxy(ServiceObject()).SetGameFpsForThermalControl(pkg, fps);
    return true;
}

bool Device::Register(int line, const std::string& bundle, const std::string& callbackName, std::string* error)
{
    auto process = AppProcess(bundle);
    if (process == nullptr) {
        return Fail(error, "package " + bundle + " is not installed");
    }
    ScopedProcess scope(process);
    sptr<Vantel::IZelCallbackInterface> callback = new GameCallback(trace_, bundle, callbackName);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        callbacks_[bundle + "/" + callbackName] = static_cast<GameCallback*>(callback.GetRefPtr());
    }
    IPCDriver::ScopedTag tag(static_cast<uint64_t>(line));
    Vantel::ZelManagerProxy(ServiceObject()).RegisterGameFpsListener(callback);
    return true;
}

bool Device::AppState(const std::string& bundle, int32_t state, std::optional<int32_t> pid,
                      std::optional<bool> focus, std::string*)
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
    services_->commonEvents->Publish(EventFwk::CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED,
                                     std::nullopt, code);
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
