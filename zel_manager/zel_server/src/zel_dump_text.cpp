// The dump for a person: one section per component, one fact per line.
#include "zel_dump.h"

namespace Tarvo::Vantel {
namespace {
std::string OrNone(const std::string& text)
{
    return text.empty() ? "none" : text;
}

std::string YesNo(bool value)
{
    return value ? "yes" : "no";
}

template <typename Range>
std::string Joined(const Range& texts)
{
    std::string out;
    for (const auto& text : texts) {
        out += (out.empty() ? "" : ", ") + text;
    }
    return OrNone(out);
}

std::string SceneLine(const SceneInfo& scene)
{
    return "    " + scene.sceneName + " pkg=" + OrNone(scene.pkgName) + " count=" + std::to_string(scene.enterCount) +
           (scene.interruptible ? "" : " freezing") + "\n";
}

std::string ConfigText(const ServiceDump& dump)
{
    std::string out = "Configuration\n";
    for (const auto& [name, enabled] : dump.switches) {
        out += "  switch " + name + " = " + (enabled ? "true" : "false") + "\n";
    }
    for (const auto& [name, values] : dump.numbers) {
        std::string list;
        for (int32_t value : values) {
            list += " " + std::to_string(value);
        }
        out += "  numbers " + name + " =" + list + "\n";
    }
    for (const auto& [name, scene] : dump.sceneCatalogue) {
        out += "  scene " + name + (scene.interruptible ? " interruptible" : " freezing") + "\n";
    }
    return out;
}

std::string FrameRateText(const ServiceDump& dump)
{
    const FrameRateControl::State& state = dump.frameRate;
    std::string out = "Foreground\n  stack (bottom first): " + Joined(state.foreground) + "\n";
    out += "  reported: " + OrNone(state.curPkgName) + "\n";
    for (const auto& [pkg, id] : state.pkgIds) {
        out += "  id " + pkg + " = " + std::to_string(id) + "\n";
    }
    out += "Scenes\n  active:\n";
    for (const auto& scene : state.activeScenes) {
        out += SceneLine(scene);
    }
    out += "  current: " + OrNone(state.currentScene) + "\n  waiting:\n";
    for (const auto& scene : state.waitQueue) {
        out += SceneLine(scene);
    }
    out += "  parked package: " + OrNone(state.pendingPkgName) + "\n";
    out += "  origin package: " + OrNone(state.originPkgName) + "\n";
    return out + "  freezing time-out pending: " + YesNo(dump.freezingTimeoutPending) + "\n";
}

std::string VotesText(const ServiceDump& dump)
{
    const FrameRateControl::State& state = dump.frameRate;
    std::string out = "Votes\n  thermal force: " + std::to_string(state.thermForceValue) + "\n";
    out += "  light: type0 " + YesNo(state.lightStateType0) + ", type1 " + YesNo(state.lightStateType1) + ", factor " +
           YesNo(state.lightFactorStatus) + "\n";
    for (const auto& [kind, vote] : dump.mox.votes) {
        out += "  last " + kind + " vote: " + vote.eventName + " status=" + (vote.eventStatus ? "on" : "off") +
               " min=" + std::to_string(vote.minRefreshRate) + " max=" + std::to_string(vote.maxRefreshRate) +
               (vote.description.empty() ? "" : " desc=" + vote.description) + "\n";
    }
    return out + "  last packages sent: " + Joined(dump.mox.pkgs) + "\n";
}

std::string CallbacksText(const std::string& label, const std::map<std::string, std::vector<bool>>& callbacks)
{
    std::string out;
    for (const auto& [pkg, alive] : callbacks) {
        std::vector<std::string> states;
        for (bool one : alive) {
            states.emplace_back(one ? "alive" : "dead");
        }
        out += "  " + label + " " + pkg + ": " + Joined(states) + "\n";
    }
    return out;
}

std::string GamesText(const GameFpsPolicy::State& state)
{
    std::string out = "Games\n  enabled: " + YesNo(state.gameFpsSwitch) + " (at most " +
                      std::to_string(state.maxPkgSize) + " packages, " + std::to_string(state.maxCallbackSize) +
                      " callbacks each)\n";
    out += "  packages: " + Joined(state.gamePkgs) + "\n  classifying: " + Joined(state.queryingPkgs) + "\n";
    out += CallbacksText("callbacks", state.callbacks) + CallbacksText("parked callbacks", state.parkedCallbacks);
    for (const auto& [pkg, fps] : state.targets) {
        out += "  target " + pkg + " = " + std::to_string(fps) + "\n";
    }
    for (const auto& [pkg, retry] : state.retries) {
        out += "  retry " + pkg + ": fps " + std::to_string(retry.fps) + ", " + std::to_string(retry.retryTimes) +
               " left, " + std::to_string(retry.callbacks) + " callbacks\n";
    }
    return out;
}

std::string ResolutionText(const ResolutionManager::State& state)
{
    std::string out = "Resolution\n  mode: ";
    out += state.mode < 0 ? "none" : std::to_string(state.mode) + " (stored: " + std::to_string(state.modeResult) + ")";
    out += "\n  style: " + (state.style < 0 ? std::string("none") : std::to_string(state.style)) + "\n";
    return out + "  retries: configure " + std::to_string(state.configureRetryTimes) + ", database " +
           std::to_string(state.databaseRetryTimes) + "\n";
}
}  // namespace

std::string DumpText(const ServiceDump& dump)
{
    return ConfigText(dump) + FrameRateText(dump) + VotesText(dump) + GamesText(dump.games) +
           ResolutionText(dump.resolution);
}

}  // namespace Tarvo::Vantel
