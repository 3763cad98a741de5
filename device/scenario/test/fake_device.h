#ifndef ZEL_DEVICE_SCENARIO_TEST_FAKE_DEVICE_H
#define ZEL_DEVICE_SCENARIO_TEST_FAKE_DEVICE_H

// A DeviceControl that records each call as a line of text with the virtual time it came at,
// refuses the calls a test names, and lets the test trace events in reaction to calls.

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "device_control.h"
#include "platform_clock.h"

namespace Tarvo::Emu {

class FakeDevice : public DeviceControl {
public:
    struct Call {
        int64_t t;
        std::string text;
    };
    std::vector<Call> calls;
    std::map<std::string, std::string> refuse;  // first word of a call -> reason
    std::string failure;
    std::function<void(FakeDevice&, const std::string& call)> onCall;
    Trace trace;

    std::vector<std::string> Texts() const
    {
        std::vector<std::string> texts;
        for (const auto& call : calls) {
            texts.push_back(call.text);
        }
        return texts;
    }

    bool UseConfig(const std::optional<std::string>& path, std::string* error) override
    {
        return Record("config " + path.value_or("none"), error);
    }
    bool SetParam(const std::string& key, const std::string& value, std::string* error) override
    {
        return Record("param " + key + " " + value, error);
    }
    bool PresetSetting(const std::string& key, const std::string& value, std::string* error) override
    {
        return Record("settings.set " + key + " " + value, error);
    }
    bool Boot(std::string* error) override { return (booted_ = Record("boot", error)); }
    bool IsBooted() const override { return booted_; }
    bool InstallPackage(const Package& p, std::string* error) override
    {
        return Record("install " + p.bundle + " uid=" + std::to_string(p.uid) + " game=" + std::to_string(p.game) +
                          " system=" + std::to_string(p.system) + " type=" + std::to_string(p.type.value_or(-1)),
                      error);
    }
    bool RemovePackage(const std::string& bundle, std::string* error) override
    {
        return Record("remove " + bundle, error);
    }
    bool IsInstalled(const std::string&) const override { return true; }
    void SetAbilityObtainable(int32_t id, bool up) override { Record("sa " + std::to_string(id) + Up(up), nullptr); }
    void SetServiceManagerUp(bool up) override { Record("samgr" + Up(up), nullptr); }
    void SetSettingsUp(bool up) override { Record("settings" + Up(up), nullptr); }
    void SetCategoryUp(bool up) override { Record("category" + Up(up), nullptr); }
    bool RestartAppManager(std::string* error) override { return Record("appmgr.restart", error); }
    bool KillApp(const std::string& bundle, std::string* error) override { return Record("kill " + bundle, error); }
    bool SetIpcFail(const std::string& bundle, bool fail, std::string* error) override
    {
        return Record("ipcfail " + bundle + Up(fail), error);
    }
    bool SendScene(int line, const CallerSpec& caller, const std::string& pkg, const std::string& scene, uint32_t state,
                   std::string* error) override
    {
        return Record("scene " + Tag(line, caller) + " " + pkg + " " + scene + " " + std::to_string(state), error);
    }
    bool SendResolution(int line, const CallerSpec& caller, int32_t mode, int32_t flag, std::string* error) override
    {
        return Record("resolution " + Tag(line, caller) + " " + std::to_string(mode) + " " + std::to_string(flag),
                      error);
    }
    bool SendThermal(int line, const CallerSpec& caller, const std::vector<std::pair<uint32_t, uint32_t>>& map,
                     std::string* error) override
    {
        std::string text = "thermal " + Tag(line, caller);
        for (const auto& [key, value] : map) {
            text += " " + std::to_string(key) + "=" + std::to_string(value);
        }
        return Record(text, error);
    }
    bool SendGameFps(int line, const CallerSpec& caller, const std::string& pkg, uint32_t fps,
                     std::string* error) override
    {
        return Record("gamefps " + Tag(line, caller) + " " + pkg + " " + std::to_string(fps), error);
    }
    bool Register(int line, const std::string& bundle, const std::string& name, std::string* error) override
    {
        return Record("register " + std::to_string(line) + " " + bundle + " " + name, error);
    }
    bool SendRaw(int line, const RawRequest& r, std::string* error) override
    {
        std::string text = "raw " + Tag(line, r.caller) + " " + std::to_string(r.code) + (r.oneWay ? " oneway" : "") +
                           (r.bundle.empty() ? "" : " to=" + r.bundle + ":" + r.callback) +
                           (r.writeToken ? "" : " notoken") + " fields=" + std::to_string(r.fields.size());
        return Record(text, error);
    }
    bool Dump(int line, std::string* error) override { return Record("dump " + std::to_string(line), error); }
    bool AppState(const std::string& bundle, int32_t state, std::optional<int32_t> pid, std::optional<bool> focus,
                  std::string* error) override
    {
        return Record("appstate " + bundle + " " + std::to_string(state) + " pid=" +
                          (pid ? std::to_string(*pid) : "-") + " focus=" + (focus ? std::to_string(*focus) : "-"),
                      error);
    }
    bool PowerMode(int32_t code, std::string* error) override
    {
        return Record("powermode " + std::to_string(code), error);
    }
    bool PublishEvent(const std::string& action, const std::optional<std::string>& bundle, std::optional<int32_t> code,
                      std::string* error) override
    {
        return Record(
            "event " + action + " bundle=" + bundle.value_or("-") + " code=" + (code ? std::to_string(*code) : "-"),
            error);
    }
    bool Light(uint32_t type, bool state, std::string* error) override
    {
        return Record("light " + std::to_string(type) + Up(state), error);
    }
    Trace& GetTrace() override { return trace; }
    std::string Failure() const override { return failure; }

private:
    static std::string Up(bool up) { return up ? " up" : " down"; }
    static std::string Tag(int line, const CallerSpec& caller)
    {
        static const char* kinds[] = {"system", "native", "shell", "bundle:"};
        return std::to_string(line) + " " + kinds[static_cast<int>(caller.kind)] + caller.bundle;
    }
    bool Record(const std::string& text, std::string* error)
    {
        calls.push_back({PlatformClock::now().time_since_epoch().count(), text});
        if (onCall) {
            onCall(*this, text);
        }
        auto refused = refuse.find(text.substr(0, text.find(' ')));
        if (refused == refuse.end()) {
            return true;
        }
        if (error != nullptr) {
            *error = refused->second;
        }
        return false;
    }

    bool booted_ = false;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SCENARIO_TEST_FAKE_DEVICE_H
