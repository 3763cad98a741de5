// The controls of a device in real processes: each goes to the process that owns what it touches.
#include <signal.h>
#include <unistd.h>

#include <algorithm>

#include "common_event_support.h"
#include "input_text.h"
#include "ipc_types.h"
#include "process_device.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {
using namespace DeviceLayout;
constexpr int32_t STATE_FOREGROUND = 2;
constexpr const char* kCatalogReaders[] = {"app_manager", "bundle_manager", "app_category", "component_scheduler"};

AgentControl Make(AgentCode code)
{
    AgentControl control;
    control.code = code;
    return control;
}

AgentControl Pair(AgentCode code, const std::string& key, const std::string& value)
{
    AgentControl control = Make(code);
    control.key = key;
    control.value = value;
    return control;
}

AgentControl Flag(AgentCode code, bool flag, int32_t id = 0)
{
    AgentControl control = Make(code);
    control.flag = flag;
    control.id = id;
    return control;
}

AgentControl Publish(const std::string& action, const std::optional<std::string>& bundle, std::optional<int32_t> code)
{
    AgentControl control = Make(AgentCode::PUBLISH);
    control.key = action;
    control.bundle = bundle;
    control.number = code;
    return control;
}

std::string AppName(const std::string& bundle)
{
    return "app " + bundle;
}
}  // namespace

bool ProcessDevice::UseConfig(const std::optional<std::string>& path, std::string* error)
{
    return UseConfigFile(data_.Path(), setup_.device.scenarioDir, path, error);
}

bool ProcessDevice::SetParam(const std::string& key, const std::string& value, std::string* error)
{
    return Control("params", Pair(AgentCode::PRESET_PARAM, key, value), error);
}

bool ProcessDevice::PresetSetting(const std::string& key, const std::string& value, std::string* error)
{
    std::string reason;
    if (!Control("settings", Pair(AgentCode::PRESET_SETTING, key, value), &reason)) {
        return Fail(error, reason.empty() ? "cannot write setting " + Shown(key) : reason);
    }
    return true;
}

bool ProcessDevice::Boot(std::string* error)
{
    if (booted_) {
        return Fail(error, "the device has already booted");
    }
    std::string reason;
    if (!StartChild("host", "host", setup_.device.serviceLibrary, ServiceIdentity(), &reason) ||
        !Control("host", Make(AgentCode::BOOT), &reason)) {
        failure_ = "the service library could not be loaded: " + reason;
        return Fail(error, failure_);
    }
    booted_ = true;
    return true;
}

bool ProcessDevice::SyncCatalog(const std::string& name, std::string* error)
{
    for (const Package& package : catalog_.All()) {
        AgentControl control = Make(AgentCode::INSTALL);
        control.package = package;
        if (!Control(name, control, error)) {
            return false;
        }
    }
    return true;
}

bool ProcessDevice::InstallPackage(const Package& package, std::string* error)
{
    if (!catalog_.Install(package, error)) {
        return false;
    }
    AgentControl control = Make(AgentCode::INSTALL);
    control.package = *catalog_.FindByBundle(package.bundle);  // with the uid it was given
    for (const char* reader : kCatalogReaders) {
        if (!Control(reader, control, error)) {
            return false;
        }
    }
    return !booted_ ||
           Control("common_events",
                   Publish(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, package.bundle, std::nullopt),
                   error);
}

bool ProcessDevice::RemovePackage(const std::string& bundle, std::string* error)
{
    if (!catalog_.Remove(bundle)) {
        return Fail(error, "package " + Shown(bundle) + " is not installed");
    }
    for (const char* reader : kCatalogReaders) {
        if (!Control(reader, Pair(AgentCode::REMOVE, bundle, ""), error)) {
            return false;
        }
    }
    return Control("common_events",
                   Publish(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_REMOVED, bundle, std::nullopt), error);
}

bool ProcessDevice::IsInstalled(const std::string& bundle) const
{
    return catalog_.FindByBundle(bundle).has_value();
}

void ProcessDevice::SetAbilityObtainable(int32_t id, bool obtainable)
{
    ControlQuietly("samgr", Flag(AgentCode::ABILITY, obtainable, id));
}

void ProcessDevice::SetServiceManagerUp(bool up)
{
    ControlQuietly("samgr", Flag(AgentCode::SET_UP, up));
}

void ProcessDevice::SetSettingsUp(bool up)
{
    ControlQuietly("settings", Flag(AgentCode::SET_UP, up));
}

void ProcessDevice::SetCategoryUp(bool up)
{
    ControlQuietly("app_category", Flag(AgentCode::SET_UP, up));
}

// The new manager is registered (it attaches once it has) before the old one dies, as a restarted
// service is by the time its holders react.
bool ProcessDevice::RestartAppManager(std::string* error)
{
    auto old = children_.extract("app_manager");
    const std::string name = "app_manager";
    if (!StartChild(name, name, "", NativeIdentity(nextServicePid_++, name), error) || !SyncCatalog(name, error)) {
        return false;
    }
    if (!old.empty()) {
        old.mapped().process->Kill(SIGKILL);
        old.mapped().process->Wait();
        Bury(old.mapped());
    }
    return true;
}

bool ProcessDevice::KillApp(const std::string& bundle, std::string* error)
{
    auto app = children_.extract(AppName(bundle));
    if (app.empty()) {
        return IsInstalled(bundle) ? true : Fail(error, "package " + Shown(bundle) + " is not installed");
    }
    // Its callbacks' proxies die in the service as its connections close.
    app.mapped().process->Kill(SIGKILL);
    app.mapped().process->Wait();
    Bury(app.mapped());
    return true;
}

pid_t ProcessDevice::AppRealPid(const std::string& bundle) const
{
    auto found = children_.find(AppName(bundle));
    return found != children_.end() ? found->second.process->Pid() : 0;
}

ProcessDevice::Child* ProcessDevice::AppChild(const std::string& bundle, std::string* error)
{
    std::optional<Package> package = catalog_.FindByBundle(bundle);
    if (!package) {
        Fail(error, "package " + Shown(bundle) + " is not installed");
        return nullptr;
    }
    const std::string name = AppName(bundle);
    if (Child* child = Find(name); child != nullptr && !child->process->Poll()) {
        return child;
    }
    children_.erase(name);
    if (!StartChild(name, "app", bundle, AppIdentity(nextAppPid_++, *package), error)) {
        return nullptr;
    }
    return Find(name);
}

bool ProcessDevice::AdoptProcess(pid_t realPid, const CallerSpec& caller, ProcessIdentity* given, std::string* error)
{
    const bool ours = std::any_of(children_.begin(), children_.end(),
                                  [realPid](const auto& child) { return child.second.process->Pid() == realPid; });
    if (registry_ == nullptr || realPid <= 0 || realPid == getpid() || ours) {
        return Fail(error, "no process to adopt");
    }
    if (caller.kind == CallerSpec::Kind::BUNDLE) {
        std::optional<Package> package = catalog_.FindByBundle(caller.bundle);
        if (!package) {
            return Fail(error, "package " + Shown(caller.bundle) + " is not installed");
        }
        *given = AppIdentity(nextAdoptedPid_++, *package);
    } else {
        *given = CallerIdentity(caller.kind, nextAdoptedPid_++);
    }
    return registry_->Register(realPid, {*given}, error);
}

ProcessDevice::Child* ProcessDevice::CallerChild(const CallerSpec& caller, std::string* error)
{
    switch (caller.kind) {
        case CallerSpec::Kind::SYSTEM:
            return Find("caller system");
        case CallerSpec::Kind::NATIVE:
            return Find("caller native");
        case CallerSpec::Kind::SHELL:
            return Find("caller shell");
        case CallerSpec::Kind::BUNDLE:
            break;
    }
    return AppChild(caller.bundle, error);
}

bool ProcessDevice::SetIpcFail(const std::string& bundle, bool fail, std::string* error)
{
    Child* app = AppChild(bundle, error);
    if (app == nullptr) {
        return false;
    }
    // Every process but the controller, whose controls must still reach the application.
    for (const auto& [name, child] : children_) {
        ControlQuietly(name, Flag(AgentCode::FAULT, fail, app->pid));
    }
    return true;
}

bool ProcessDevice::AppState(const std::string& bundle, int32_t state, std::optional<int32_t> pid,
                             std::optional<bool> focus, std::string*)
{
    AgentControl control = Flag(AgentCode::APP_STATE, focus.value_or(state == STATE_FOREGROUND));
    control.key = bundle;
    control.state = state;
    if (pid) {
        control.id = *pid;
    } else if (Child* app = AppChild(bundle, nullptr)) {
        control.id = app->pid;
    }
    ControlQuietly("app_manager", control);
    return true;
}

bool ProcessDevice::PowerMode(int32_t code, std::string*)
{
    ControlQuietly("common_events",
                   Publish(EventFwk::CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED, std::nullopt, code));
    return true;
}

bool ProcessDevice::PublishEvent(const std::string& action, const std::optional<std::string>& bundle,
                                 std::optional<int32_t> code, std::string*)
{
    ControlQuietly("common_events", Publish(action, bundle, code));
    return true;
}

bool ProcessDevice::Light(uint32_t type, bool state, std::string*)
{
    ControlQuietly("power", Flag(AgentCode::LIGHT, state, static_cast<int32_t>(type)));
    return true;
}

void ProcessDevice::Shutdown()
{
    if (booted_) {
        ControlQuietly("host", Make(AgentCode::SHUTDOWN));
    }
}

// Every process counts its work in the device's page, and one-way requests on their way in their
// receiver's share.
bool ProcessDevice::WaitQuiet(std::chrono::milliseconds stallLimit)
{
    return VirtualClock::WaitQuiet(stallLimit);
}

}  // namespace Tarvo::Emu
