#include "command_executor.h"

namespace Tarvo::Emu {
namespace {
// One operator() per command; each returns the device's answer.
struct Dispatch {
    DeviceControl& device;
    int line;
    std::string* error;

    bool operator()(const Cmd::Config& c) const { return device.UseConfig(c.path, error); }
    bool operator()(const Cmd::Param& c) const { return device.SetParam(c.key, c.value, error); }
    bool operator()(const Cmd::PresetSetting& c) const { return device.PresetSetting(c.key, c.value, error); }
    bool operator()(const Cmd::Boot&) const { return device.Boot(error); }
    bool operator()(const Cmd::Install& c) const { return device.InstallPackage(c.package, error); }
    bool operator()(const Cmd::Remove& c) const { return device.RemovePackage(c.bundle, error); }
    bool operator()(const Cmd::Ability& c) const
    {
        device.SetAbilityObtainable(c.id, c.up);
        return true;
    }
    bool operator()(const Cmd::Toggle& c) const
    {
        switch (c.target) {
            case Cmd::Toggle::Target::SERVICE_MANAGER:
                device.SetServiceManagerUp(c.up);
                break;
            case Cmd::Toggle::Target::SETTINGS:
                device.SetSettingsUp(c.up);
                break;
            case Cmd::Toggle::Target::CATEGORY:
                device.SetCategoryUp(c.up);
                break;
        }
        return true;
    }
    bool operator()(const Cmd::RestartAppManager&) const { return device.RestartAppManager(error); }
    bool operator()(const Cmd::Kill& c) const { return device.KillApp(c.bundle, error); }
    bool operator()(const Cmd::IpcFail& c) const { return device.SetIpcFail(c.bundle, c.fail, error); }
    bool operator()(const Cmd::Scene& c) const
    {
        return device.SendScene(line, c.caller, c.pkg, c.scene, c.state, error);
    }
    bool operator()(const Cmd::Resolution& c) const
    {
        return device.SendResolution(line, c.caller, c.mode, c.flag, error);
    }
    bool operator()(const Cmd::Thermal& c) const { return device.SendThermal(line, c.caller, c.map, error); }
    bool operator()(const Cmd::GameFps& c) const { return device.SendGameFps(line, c.caller, c.pkg, c.fps, error); }
    bool operator()(const Cmd::Register& c) const { return device.Register(line, c.bundle, c.callbackName, error); }
    bool operator()(const Cmd::Raw& c) const { return device.SendRaw(line, c.request, error); }
    bool operator()(const Cmd::Dump&) const { return device.Dump(line, error); }
    bool operator()(const Cmd::AppState& c) const { return device.AppState(c.bundle, c.state, c.pid, c.focus, error); }
    bool operator()(const Cmd::PowerMode& c) const { return device.PowerMode(c.code, error); }
    bool operator()(const Cmd::Event& c) const { return device.PublishEvent(c.action, c.bundle, c.code, error); }
    bool operator()(const Cmd::Light& c) const { return device.Light(c.type, c.state, error); }
    bool operator()(const Cmd::Expect&) const { return true; }
    bool operator()(const Cmd::End&) const { return true; }
};
}  // namespace

bool CommandExecutor::Run(int line, const ScenarioCommand& command, std::string* error)
{
    std::string reason;
    if (std::visit(Dispatch{device_, line, &reason}, command)) {
        return true;
    }
    *error = reason.empty() ? std::string("the device refused the command") : reason;
    return false;
}

}  // namespace Tarvo::Emu
