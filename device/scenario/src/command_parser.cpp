#include "command_parser.h"

#include <algorithm>
#include <filesystem>
#include <limits>

#include "input_text.h"
#include "raw_fields.h"
#include "trace_kinds.h"

namespace Tarvo::Emu {
namespace {
constexpr int64_t I32_MIN = std::numeric_limits<int32_t>::min();
constexpr int64_t I32_MAX = std::numeric_limits<int32_t>::max();
constexpr int64_t U32_MAX = std::numeric_limits<uint32_t>::max();
constexpr int32_t FOREGROUND = 2;
constexpr int32_t BACKGROUND = 4;

template <typename T>
bool Produce(ScenarioCommand* command, T value)
{
    *command = std::move(value);
    return true;
}
}  // namespace

CommandParser::CommandParser(std::string baseDir) : baseDir_(std::move(baseDir))
{
    // Start from the packages every device has, numbered as the catalogue numbers them.
    for (const auto& package : PackageCatalog().All()) {
        installed_[package.bundle] = package.uid;
        nextUid_ = std::max<int64_t>(nextUid_, int64_t{package.uid} + 1);
    }
    AddSetUp();
    AddDeviceState();
    AddRequests();
    AddEvents();
    AddChecks();
}

bool CommandParser::Parse(const std::vector<ScenarioWord>& words, ScenarioCommand* command, std::string* error)
{
    if (ended_) {
        *error = "nothing may follow end";
        return false;
    }
    const std::string& name = words.front().text;
    auto handler = handlers_.find(name);
    if (handler == handlers_.end()) {
        *error = "unknown command '" + Shown(name) + "'";
        return false;
    }
    CommandArgs args(name, std::vector<ScenarioWord>(words.begin() + 1, words.end()));
    return handler->second(args, command, error);
}

bool CommandParser::SetUpAllowed(const CommandArgs& args, std::string* error) const
{
    if (booted_) {
        *error = args.Command() + ": device set-up is only allowed before boot";
        return false;
    }
    return true;
}

bool CommandParser::RequestAllowed(const CommandArgs& args, std::string* error) const
{
    if (!booted_) {
        *error = args.Command() + ": a request to the service is only allowed after boot";
        return false;
    }
    return true;
}

bool CommandParser::Installed(const CommandArgs& args, const std::string& bundle, std::string* error) const
{
    if (installed_.count(bundle) == 0) {
        *error = args.Command() + ": '" + Shown(bundle) + "' is not installed at this point";
        return false;
    }
    return true;
}

bool CommandParser::Caller(const CommandArgs& args, CallerSpec::Kind byDefault, CallerSpec* caller,
                           std::string* error) const
{
    const auto as = args.Find("as");
    if (!as) {
        caller->kind = byDefault;
    } else if (*as == "system") {
        caller->kind = CallerSpec::Kind::SYSTEM;
    } else if (*as == "native") {
        caller->kind = CallerSpec::Kind::NATIVE;
    } else if (*as == "shell") {
        caller->kind = CallerSpec::Kind::SHELL;
    } else if (installed_.count(*as) != 0) {
        caller->kind = CallerSpec::Kind::BUNDLE;
        caller->bundle = *as;
    } else {
        *error = args.Command() + ": as='" + Shown(*as) + "' is neither system, native, shell nor an installed bundle";
        return false;
    }
    return true;
}

void CommandParser::AddSetUp()
{
    handlers_["config"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseConfig(a, c, e);
    };
    handlers_["param"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return SetUpAllowed(a, e) && a.Count(2, 2, "param KEY VALUE", e) && a.OnlyOptions({}, e) &&
               Produce(c, Cmd::Param{a.Positional()[0], a.Positional()[1]});
    };
    handlers_["settings.set"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return SetUpAllowed(a, e) && a.Count(2, 2, "settings.set KEY VALUE", e) && a.OnlyOptions({}, e) &&
               Produce(c, Cmd::PresetSetting{a.Positional()[0], a.Positional()[1]});
    };
    handlers_["boot"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        if (booted_) {
            *e = "boot: the device is already booted";
            return false;
        }
        booted_ = a.Count(0, 0, "boot", e) && a.OnlyOptions({}, e);
        return booted_ && Produce(c, Cmd::Boot{});
    };
}

bool CommandParser::ParseConfig(const CommandArgs& args, ScenarioCommand* command, std::string* error)
{
    if (!SetUpAllowed(args, error) || !args.Count(1, 1, "config FILE|none", error) || !args.OnlyOptions({}, error)) {
        return false;
    }
    if (configSeen_) {
        *error = "config: the configuration is already chosen";
        return false;
    }
    const std::string& name = args.Positional()[0];
    Cmd::Config config;
    if (name != "none") {
        std::filesystem::path path(name);
        if (path.is_relative()) {
            path = std::filesystem::path(baseDir_) / path;
        }
        std::error_code ec;
        if (!std::filesystem::is_regular_file(path, ec)) {
            *error = "config: no file '" + Shown(path.string()) + "'";
            return false;
        }
        // Absolute, so that the device does not resolve a relative scenario folder a second time.
        config.path = std::filesystem::absolute(path, ec).string();
    }
    configSeen_ = true;
    return Produce(command, std::move(config));
}

void CommandParser::AddDeviceState()
{
    handlers_["pkg.install"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseInstall(a, c, e);
    };
    handlers_["pkg.remove"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        if (!a.Count(1, 1, "pkg.remove BUNDLE", e) || !a.OnlyOptions({}, e) || !Installed(a, a.Positional()[0], e)) {
            return false;
        }
        installed_.erase(a.Positional()[0]);
        return Produce(c, Cmd::Remove{a.Positional()[0]});
    };
    for (const bool up : {false, true}) {
        handlers_[up ? "sa.up" : "sa.down"] = [up](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
            int64_t id = 0;
            return a.Count(1, 1, a.Command() + " ID", e) && a.OnlyOptions({}, e) &&
                   a.Ranged(a.Positional()[0], "ID", I32_MIN, I32_MAX, &id, e) &&
                   Produce(c, Cmd::Ability{static_cast<int32_t>(id), up});
        };
        using Target = Cmd::Toggle::Target;
        for (const auto& toggled : {std::pair{"samgr", Target::SERVICE_MANAGER},
                                    std::pair{"settings", Target::SETTINGS}, std::pair{"category", Target::CATEGORY}}) {
            const Target target = toggled.second;
            handlers_[std::string(toggled.first) + (up ? ".up" : ".down")] =
                [up, target](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
                    return a.Count(0, 0, a.Command(), e) && a.OnlyOptions({}, e) && Produce(c, Cmd::Toggle{target, up});
                };
        }
    }
    handlers_["appmgr.restart"] = [](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return a.Count(0, 0, "appmgr.restart", e) && a.OnlyOptions({}, e) && Produce(c, Cmd::RestartAppManager{});
    };
    handlers_["proc.kill"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return a.Count(1, 1, "proc.kill BUNDLE", e) && a.OnlyOptions({}, e) && Installed(a, a.Positional()[0], e) &&
               Produce(c, Cmd::Kill{a.Positional()[0]});
    };
    handlers_["ipc.fail"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        bool fail = false;
        return a.Count(2, 2, "ipc.fail BUNDLE on|off", e) && a.OnlyOptions({}, e) &&
               Installed(a, a.Positional()[0], e) && a.Flag(a.Positional()[1], "state", &fail, e) &&
               Produce(c, Cmd::IpcFail{a.Positional()[0], fail});
    };
}

bool CommandParser::ParseInstall(const CommandArgs& args, ScenarioCommand* command, std::string* error)
{
    if (!args.Count(1, 3, "pkg.install BUNDLE [uid=N] [game] [system] [type=N]", error) ||
        !args.OnlyOptions({"uid", "type"}, error)) {
        return false;
    }
    Package package;
    package.bundle = args.Positional()[0];
    for (size_t i = 1; i < args.Positional().size(); ++i) {
        const std::string& flag = args.Positional()[i];
        bool* target = flag == "game" ? &package.game : (flag == "system" ? &package.system : nullptr);
        if (target == nullptr || *target) {
            *error = "pkg.install: '" + Shown(flag) + "' is not game or system, or is given twice";
            return false;
        }
        *target = true;
    }
    int64_t uid = 0;
    int64_t type = 0;
    if (const auto text = args.Find("uid"); text && !args.Ranged(*text, "uid", 1, I32_MAX, &uid, error)) {
        return false;
    }
    if (const auto text = args.Find("type"); text) {
        if (!args.Ranged(*text, "type", I32_MIN, I32_MAX, &type, error)) {
            return false;
        }
        package.type = static_cast<int32_t>(type);
    }
    if (package.bundle.empty() || installed_.count(package.bundle) != 0) {
        *error = "pkg.install: '" + Shown(package.bundle) + "' is empty or already installed";
        return false;
    }
    const int64_t numbered = uid == 0 ? nextUid_ : uid;
    if (numbered > I32_MAX) {
        *error = "pkg.install: the next uid, " + std::to_string(numbered) + ", is beyond the 32-bit range; give uid=N";
        return false;
    }
    for (const auto& [bundle, taken] : installed_) {
        if (taken == numbered) {
            *error = "pkg.install: uid " + std::to_string(numbered) + " is taken by " + Shown(bundle);
            return false;
        }
    }
    installed_[package.bundle] = numbered;
    nextUid_ = std::max(nextUid_, numbered + 1);
    package.uid = static_cast<int32_t>(uid);
    return Produce(command, Cmd::Install{std::move(package)});
}

void CommandParser::AddRequests()
{
    handlers_["scene"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseScene(a, c, e);
    };
    handlers_["resolution"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseResolution(a, c, e);
    };
    handlers_["thermal"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseThermal(a, c, e);
    };
    handlers_["gamefps"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseGameFps(a, c, e);
    };
    handlers_["register"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        if (!RequestAllowed(a, e) || !a.Count(2, 2, "register BUNDLE CBNAME", e) || !a.OnlyOptions({}, e) ||
            !Installed(a, a.Positional()[0], e)) {
            return false;
        }
        callbacks_.emplace(a.Positional()[0], a.Positional()[1]);
        return Produce(c, Cmd::Register{a.Positional()[0], a.Positional()[1]});
    };
    handlers_["raw"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) { return ParseRaw(a, c, e); };
    handlers_["dump"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return RequestAllowed(a, e) && a.Count(0, 0, "dump", e) && a.OnlyOptions({}, e) && Produce(c, Cmd::Dump{});
    };
}

bool CommandParser::ParseScene(const CommandArgs& args, ScenarioCommand* command, std::string* error) const
{
    Cmd::Scene scene;
    if (!RequestAllowed(args, error) || !args.Count(3, 3, "scene PKG SCENE STATE [as=CALLER]", error) ||
        !args.OnlyOptions({"as"}, error) || !args.Wire32(args.Positional()[2], "STATE", &scene.state, error) ||
        !Caller(args, CallerSpec::Kind::SYSTEM, &scene.caller, error)) {
        return false;
    }
    scene.pkg = args.Positional()[0];
    scene.scene = args.Positional()[1];
    return Produce(command, std::move(scene));
}

bool CommandParser::ParseResolution(const CommandArgs& args, ScenarioCommand* command, std::string* error) const
{
    Cmd::Resolution resolution;
    uint32_t mode = 0;
    uint32_t flag = 0;
    if (!RequestAllowed(args, error) || !args.Count(2, 2, "resolution MODE FLAG [as=CALLER]", error) ||
        !args.OnlyOptions({"as"}, error) || !args.Wire32(args.Positional()[0], "MODE", &mode, error) ||
        !args.Wire32(args.Positional()[1], "FLAG", &flag, error) ||
        !Caller(args, CallerSpec::Kind::NATIVE, &resolution.caller, error)) {
        return false;
    }
    resolution.mode = static_cast<int32_t>(mode);
    resolution.flag = static_cast<int32_t>(flag);
    return Produce(command, std::move(resolution));
}

bool CommandParser::ParseThermal(const CommandArgs& args, ScenarioCommand* command, std::string* error) const
{
    if (!RequestAllowed(args, error) || !args.Count(0, 0, "thermal KEY=VALUE... [as=CALLER]", error)) {
        return false;
    }
    Cmd::Thermal thermal;
    bool callerSeen = false;
    for (const auto& [key, value] : args.Options()) {
        if (key == "as") {
            if (callerSeen) {
                *error = "thermal: option 'as' given twice";
                return false;
            }
            callerSeen = true;
            continue;
        }
        uint32_t wireKey = 0;
        uint32_t wireValue = 0;
        if (!args.Wire32(key, "key", &wireKey, error) || !args.Wire32(value, "value", &wireValue, error)) {
            return false;
        }
        thermal.map.emplace_back(wireKey, wireValue);
    }
    return Caller(args, CallerSpec::Kind::NATIVE, &thermal.caller, error) && Produce(command, std::move(thermal));
}

bool CommandParser::ParseGameFps(const CommandArgs& args, ScenarioCommand* command, std::string* error) const
{
    Cmd::GameFps gameFps;
    if (!RequestAllowed(args, error) || !args.Count(2, 2, "gamefps PKG FPS [as=CALLER]", error) ||
        !args.OnlyOptions({"as"}, error) || !args.Wire32(args.Positional()[1], "FPS", &gameFps.fps, error) ||
        !Caller(args, CallerSpec::Kind::NATIVE, &gameFps.caller, error)) {
        return false;
    }
    gameFps.pkg = args.Positional()[0];
    return Produce(command, std::move(gameFps));
}

bool CommandParser::ParseRaw(const CommandArgs& args, ScenarioCommand* command, std::string* error) const
{
    Cmd::Raw raw;
    RawRequest& request = raw.request;
    if (!RequestAllowed(args, error) ||
        !args.Count(1, 1 + kMaxRawFields,
                    "raw CODE [FIELD...] [oneway] [token=DESC|none] [to=BUNDLE:CBNAME] [as=CALLER]", error) ||
        !args.OnlyOptions({"token", "to", "as"}, error) ||
        !args.Wire32(args.Positional()[0], "CODE", &request.code, error) ||
        !Caller(args, CallerSpec::Kind::SYSTEM, &request.caller, error) || !ParseRawTarget(args, &request, error)) {
        return false;
    }
    if (const auto token = args.Find("token"); token) {
        request.writeToken = *token != "none";
        request.token = Utf8ToUtf16(*token);
    }
    for (size_t i = 1; i < args.Positional().size(); ++i) {
        const std::string& word = args.Positional()[i];
        if (word == "oneway") {
            request.oneWay = true;
            continue;
        }
        if (!ParseRawField(args, word, &request.fields.emplace_back(), error)) {
            return false;
        }
    }
    return Produce(command, std::move(raw));
}

// to=BUNDLE:CBNAME names a callback object a register line made, reached from another process.
bool CommandParser::ParseRawTarget(const CommandArgs& args, RawRequest* request, std::string* error) const
{
    const auto to = args.Find("to");
    if (!to) {
        return true;
    }
    const size_t colon = to->find(':');
    request->bundle = to->substr(0, colon);
    request->callback = colon == std::string::npos ? std::string() : to->substr(colon + 1);
    if (callbacks_.count({request->bundle, request->callback}) == 0) {
        *error = "raw: to='" + Shown(*to) + "' names no callback a register line made (to=BUNDLE:CBNAME)";
        return false;
    }
    if (request->caller.kind == CallerSpec::Kind::BUNDLE && request->caller.bundle == request->bundle) {
        *error = "raw: the callback lives in the caller's own process; send it from another (as=...)";
        return false;
    }
    return true;
}

void CommandParser::AddEvents()
{
    handlers_["fg"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseAppState(a, FOREGROUND, c, e);
    };
    handlers_["bg"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseAppState(a, BACKGROUND, c, e);
    };
    handlers_["appstate"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseAppState(a, std::nullopt, c, e);
    };
    handlers_["powermode"] = [](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        int64_t code = 0;
        return a.Count(1, 1, "powermode CODE", e) && a.OnlyOptions({}, e) &&
               a.Ranged(a.Positional()[0], "CODE", I32_MIN, I32_MAX, &code, e) &&
               Produce(c, Cmd::PowerMode{static_cast<int32_t>(code)});
    };
    handlers_["event"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseEvent(a, c, e);
    };
    handlers_["light"] = [](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        int64_t type = 0;
        bool state = false;
        return a.Count(2, 2, "light TYPE STATE", e) && a.OnlyOptions({}, e) &&
               a.Ranged(a.Positional()[0], "TYPE", 0, U32_MAX, &type, e) &&
               a.Flag(a.Positional()[1], "STATE", &state, e) &&
               Produce(c, Cmd::Light{static_cast<uint32_t>(type), state});
    };
}

bool CommandParser::ParseAppState(const CommandArgs& args, std::optional<int32_t> state, ScenarioCommand* command,
                                  std::string* error) const
{
    const size_t count = state ? 1 : 2;
    const std::string usage = args.Command() + (state ? " BUNDLE" : " BUNDLE STATE") + " [pid=N] [focus=0|1]";
    if (!args.Count(count, count, usage, error) || !args.OnlyOptions({"pid", "focus"}, error) ||
        !Installed(args, args.Positional()[0], error)) {
        return false;
    }
    Cmd::AppState appState{args.Positional()[0], state.value_or(0), std::nullopt, std::nullopt};
    uint32_t wireState = 0;
    if (!state) {
        if (!args.Wire32(args.Positional()[1], "STATE", &wireState, error)) {
            return false;
        }
        appState.state = static_cast<int32_t>(wireState);
    }
    int64_t pid = 0;
    bool focus = false;
    if (const auto text = args.Find("pid"); text) {
        if (!args.Ranged(*text, "pid", I32_MIN, I32_MAX, &pid, error)) {
            return false;
        }
        appState.pid = static_cast<int32_t>(pid);
    }
    if (const auto text = args.Find("focus"); text) {
        if (!args.Flag(*text, "focus", &focus, error)) {
            return false;
        }
        appState.focus = focus;
    }
    return Produce(command, std::move(appState));
}

bool CommandParser::ParseEvent(const CommandArgs& args, ScenarioCommand* command, std::string* error) const
{
    if (!args.Count(1, 1, "event ACTION [bundle=B] [code=N]", error) || !args.OnlyOptions({"bundle", "code"}, error)) {
        return false;
    }
    Cmd::Event event{args.Positional()[0], args.Find("bundle"), std::nullopt};
    if (const auto text = args.Find("code"); text) {
        int64_t code = 0;
        if (!args.Ranged(*text, "code", I32_MIN, I32_MAX, &code, error)) {
            return false;
        }
        event.code = static_cast<int32_t>(code);
    }
    return Produce(command, std::move(event));
}

void CommandParser::AddChecks()
{
    handlers_["expect"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseExpect(a, false, c, e);
    };
    handlers_["expect.none"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        return ParseExpect(a, true, c, e);
    };
    handlers_["end"] = [this](const CommandArgs& a, ScenarioCommand* c, std::string* e) {
        ended_ = a.Count(0, 0, "end", e) && a.OnlyOptions({}, e);
        return ended_ && Produce(c, Cmd::End{});
    };
}

bool CommandParser::ParseExpect(const CommandArgs& args, bool none, ScenarioCommand* command, std::string* error) const
{
    if (!args.Count(1, 1, args.Command() + " EV [FIELD=VALUE...]", error)) {
        return false;
    }
    const std::string& ev = args.Positional()[0];
    const auto* fields = TraceKindFields(ev);
    if (fields == nullptr) {
        *error = args.Command() + ": no trace event is called '" + Shown(ev) + "'";
        return false;
    }
    for (const auto& [field, value] : args.Options()) {
        // FIELD/PATH reads into an object-valued field (a dump's state).
        const std::string name = field.substr(0, field.find('/'));
        if (std::find(fields->begin(), fields->end(), name) == fields->end()) {
            std::string known;
            for (const auto& name : *fields) {
                known += (known.empty() ? "" : ", ") + name;
            }
            *error = args.Command() + ": " + ev + " has no field '" + Shown(field) + "' (fields: " + known + ")";
            return false;
        }
    }
    return Produce(command, Cmd::Expect{ev, args.Options(), none});
}

}  // namespace Tarvo::Emu
