#ifndef ZEL_DEVICE_SCENARIO_COMMAND_H
#define ZEL_DEVICE_SCENARIO_COMMAND_H

// One scenario command, checked and typed: what a line asks of the device. Numbers that the
// scenario language sends "as given" are already truncated to their 32-bit wire type here.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "device_control.h"
#include "package_catalog.h"

namespace Tarvo::Emu::Cmd {

struct Config {
    std::optional<std::string> path;  // resolved against the scenario's folder; nullopt: no file
};
struct Param {
    std::string key;
    std::string value;
};
struct PresetSetting {
    std::string key;
    std::string value;
};
struct Boot {};
struct Install {
    Package package;
};
struct Remove {
    std::string bundle;
};
struct Ability {
    int32_t id = 0;
    bool up = true;
};
struct Toggle {
    enum class Target { SERVICE_MANAGER, SETTINGS, CATEGORY };
    Target target = Target::SERVICE_MANAGER;
    bool up = true;
};
struct RestartAppManager {};
struct Kill {
    std::string bundle;
};
struct IpcFail {
    std::string bundle;
    bool fail = false;
};
struct Scene {
    CallerSpec caller;
    std::string pkg;
    std::string scene;
    uint32_t state = 0;
};
struct Resolution {
    CallerSpec caller;
    int32_t mode = 0;
    int32_t flag = 0;
};
struct Thermal {
    CallerSpec caller;
    std::vector<std::pair<uint32_t, uint32_t>> map;  // in line order, repeats kept
};
struct GameFps {
    CallerSpec caller;
    std::string pkg;
    uint32_t fps = 0;
};
struct Register {
    std::string bundle;
    std::string callbackName;
};
struct Raw {
    RawRequest request;
};
struct Dump {};
struct AppState {
    std::string bundle;
    int32_t state = 0;
    std::optional<int32_t> pid;
    std::optional<bool> focus;
};
struct PowerMode {
    int32_t code = 0;
};
struct Event {
    std::string action;
    std::optional<std::string> bundle;
    std::optional<int32_t> code;
};
struct Light {
    uint32_t type = 0;
    bool state = false;
};
struct Expect {
    std::string ev;
    std::vector<std::pair<std::string, std::string>> fields;  // all must match
    bool none = false;                                        // expect.none
};
struct End {};

}  // namespace Tarvo::Emu::Cmd

namespace Tarvo::Emu {

using ScenarioCommand =
    std::variant<Cmd::Config, Cmd::Param, Cmd::PresetSetting, Cmd::Boot, Cmd::Install, Cmd::Remove, Cmd::Ability,
                 Cmd::Toggle, Cmd::RestartAppManager, Cmd::Kill, Cmd::IpcFail, Cmd::Scene, Cmd::Resolution,
                 Cmd::Thermal, Cmd::GameFps, Cmd::Register, Cmd::Raw, Cmd::Dump, Cmd::AppState, Cmd::PowerMode,
                 Cmd::Event, Cmd::Light, Cmd::Expect, Cmd::End>;

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SCENARIO_COMMAND_H
