#include "zel_dump.h"

#include "json_text.h"
#include "zel_event_handle.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
const std::string ANIMATION_DELAYED_DELETE = "ANIMATION_DELAYED_DELETE";

using Members = std::vector<std::pair<std::string, std::string>>;

std::string Quote(const std::string& text)
{
    return JsonQuote(text);
}

std::string Object(const Members& members)
{
    std::string out = "{";
    for (const auto& [name, value] : members) {
        out += (out.size() > 1 ? "," : "") + Quote(name) + ":" + value;
    }
    return out + "}";
}

std::string Array(const std::vector<std::string>& values)
{
    std::string out = "[";
    for (const auto& value : values) {
        out += (out.size() > 1 ? "," : "") + value;
    }
    return out + "]";
}

std::string Bool(bool value)
{
    return value ? "true" : "false";
}

template <typename Range>
std::string Strings(const Range& texts)
{
    std::vector<std::string> quoted;
    for (const auto& text : texts) {
        quoted.push_back(Quote(text));
    }
    return Array(quoted);
}

// An empty name is no package at all.
std::string Nullable(const std::string& text)
{
    return text.empty() ? "null" : Quote(text);
}

std::string Scenes(const std::vector<SceneInfo>& scenes)
{
    std::vector<std::string> out;
    for (const auto& scene : scenes) {
        out.push_back(Object({{"scene", Quote(scene.sceneName)},
                              {"pkg", Quote(scene.pkgName)},
                              {"interruptible", Bool(scene.interruptible)},
                              {"count", std::to_string(scene.enterCount)}}));
    }
    return Array(out);
}

std::string ConfigJson(const ServiceDump& dump)
{
    Members switches;
    for (const auto& [name, enabled] : dump.switches) {
        switches.emplace_back(name, Bool(enabled));
    }
    Members numbers;
    for (const auto& [name, values] : dump.numbers) {
        std::vector<std::string> texts;
        for (int32_t value : values) {
            texts.push_back(std::to_string(value));
        }
        numbers.emplace_back(name, Array(texts));
    }
    Members scenes;
    for (const auto& [name, scene] : dump.sceneCatalogue) {
        scenes.emplace_back(name, Object({{"interruptible", Bool(scene.interruptible)}}));
    }
    return Object({{"switches", Object(switches)}, {"numbers", Object(numbers)}, {"scenes", Object(scenes)}});
}

std::string ForegroundJson(const FrameRateControl::State& state)
{
    Members ids;
    for (const auto& [pkg, id] : state.pkgIds) {
        ids.emplace_back(pkg, std::to_string(id));
    }
    return Object(
        {{"stack", Strings(state.foreground)}, {"reported", Nullable(state.curPkgName)}, {"ids", Object(ids)}});
}

std::string ScenesJson(const ServiceDump& dump)
{
    const FrameRateControl::State& state = dump.frameRate;
    return Object({{"active", Scenes(state.activeScenes)},
                   {"current", Nullable(state.currentScene)},
                   {"waiting", Scenes(state.waitQueue)},
                   {"parkedPackage", Nullable(state.pendingPkgName)},
                   {"originPackage", Nullable(state.originPkgName)},
                   {"freezingTimeoutPending", Bool(dump.freezingTimeoutPending)}});
}

std::string VotesJson(const ServiceDump& dump)
{
    const FrameRateControl::State& state = dump.frameRate;
    Members votes;
    for (const auto& [kind, vote] : dump.mox.votes) {
        votes.emplace_back(kind, Object({{"voter", Quote(vote.eventName)},
                                         {"status", Bool(vote.eventStatus)},
                                         {"min", std::to_string(vote.minRefreshRate)},
                                         {"max", std::to_string(vote.maxRefreshRate)},
                                         {"desc", Quote(vote.description)}}));
    }
    std::string lightSent = dump.mox.lightSent ? Bool(dump.mox.lightStatus) : "null";
    return Object({{"thermalForce", std::to_string(state.thermForceValue)},
                   {"light", Object({{"type0", Bool(state.lightStateType0)},
                                     {"type1", Bool(state.lightStateType1)},
                                     {"factor", Bool(state.lightFactorStatus)},
                                     {"sent", lightSent}})},
                   {"last", Object(votes)},
                   {"packages", Strings(dump.mox.pkgs)}});
}

std::string Liveness(const std::map<std::string, std::vector<bool>>& callbacks)
{
    Members out;
    for (const auto& [pkg, alive] : callbacks) {
        std::vector<std::string> states;
        for (bool one : alive) {
            states.push_back(one ? "alive" : "dead");
        }
        out.emplace_back(pkg, Strings(states));
    }
    return Object(out);
}

std::string GamesJson(const GameFpsPolicy::State& state)
{
    Members targets;
    for (const auto& [pkg, fps] : state.targets) {
        targets.emplace_back(pkg, std::to_string(fps));
    }
    Members retries;
    for (const auto& [pkg, retry] : state.retries) {
        retries.emplace_back(pkg, Object({{"fps", std::to_string(retry.fps)},
                                          {"retriesLeft", std::to_string(retry.retryTimes)},
                                          {"callbacks", std::to_string(retry.callbacks)}}));
    }
    return Object({{"enabled", Bool(state.gameFpsSwitch)},
                   {"maxPackages", std::to_string(state.maxPkgSize)},
                   {"maxCallbacks", std::to_string(state.maxCallbackSize)},
                   {"packages", Strings(state.gamePkgs)},
                   {"classifying", Strings(state.queryingPkgs)},
                   {"callbacks", Liveness(state.callbacks)},
                   {"parkedCallbacks", Liveness(state.parkedCallbacks)},
                   {"targets", Object(targets)},
                   {"retries", Object(retries)}});
}

std::string Unset(int32_t value)
{
    return value < 0 ? "null" : std::to_string(value);
}

std::string ResolutionJson(const ResolutionManager::State& state)
{
    return Object({{"mode", Unset(state.mode)},
                   {"modeResult", state.mode < 0 ? "null" : std::to_string(state.modeResult)},
                   {"style", Unset(state.style)},
                   {"configureRetries", std::to_string(state.configureRetryTimes)},
                   {"databaseRetries", std::to_string(state.databaseRetryTimes)}});
}
}  // namespace

ServiceDump CollectServiceDump()
{
    ServiceDump dump;
    // Written only while the configuration loads at start-up, read-only afterwards.
    dump.switches = ZelManagerConfig::GetEnableConfig();
    dump.numbers = ZelManagerConfig::GetIntNumbersConfig();
    dump.sceneCatalogue = FrameRateControl::sSceneConfig;
    dump.frameRate = FrameRateControl::GetInstance()->DumpState();
    dump.freezingTimeoutPending = EventHandle::GetInstance()->IsPending(ANIMATION_DELAYED_DELETE);
    dump.mox = ZelMoxAdapter::GetInstance()->DumpRecord();
    dump.games = GameFpsPolicy::GetInstance()->DumpState();
    dump.resolution = ResolutionManager::GetInstance()->DumpState();
    return dump;
}

std::string DumpJson(const ServiceDump& dump)
{
    return Object({{"config", ConfigJson(dump)},
                   {"foreground", ForegroundJson(dump.frameRate)},
                   {"scenes", ScenesJson(dump)},
                   {"votes", VotesJson(dump)},
                   {"games", GamesJson(dump.games)},
                   {"resolution", ResolutionJson(dump.resolution)}});
}

}  // namespace Tarvo::Vantel
