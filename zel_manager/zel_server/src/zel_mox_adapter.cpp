#include "zel_mox_adapter.h"

#include "event_info.h"
#include "zel_log.h"

namespace Tarvo::Vantel {

ZelMoxAdapter* ZelMoxAdapter::GetInstance()
{
    // Function-local static: thread-safe lazy construction, destroyed at exit.
    static ZelMoxAdapter instance;
    return &instance;
}

ZelMoxAdapter::ZelMoxAdapter() : rsInterfaces_(RSInterfaces::GetInstance()) {}

const std::map<std::string, std::string>& ZelMoxAdapter::GetSceneAliases()
{
    static const std::map<std::string, std::string> aliases = {
        {"START_APP_FROM_MULTIPLE_TASKBARS", "START_APP_ANIMATION"},
        {"BACK_ORIGIN_APP", "START_APP_ANIMATION"},
        {"BACK_DESKTOP", "BACK_APP_ANIMATION"},
        {"BACK_MULTIPLE_TASKBARS", "BACK_APP_ANIMATION"},
    };
    return aliases;
}

void ZelMoxAdapter::SendPkgToMOX(const std::vector<std::string>& pkgs)
{
    if (pkgs.empty()) {
        ZEL_LOGI("ZelMoxAdapter SendPkgToMOX no pkgName send.");
        return;
    }
    rsInterfaces_.NotifyPackageEvent(static_cast<uint32_t>(pkgs.size()), pkgs);
    {
        std::lock_guard<std::mutex> lock(recordLock_);
        record_.pkgs = pkgs;
    }
    ZEL_LOGI("ZelMoxAdapter SendPkgToMOX pkgName = %{public}s", pkgs.front().c_str());
}

void ZelMoxAdapter::SendSceneInfoToMOX(const std::string& sceneName, bool state)
{
    std::string sentName = sceneName;
    const auto& aliases = GetSceneAliases();
    if (auto it = aliases.find(sceneName); it != aliases.end()) {
        sentName = it->second;
    }
    EventInfo eventInfo;
    eventInfo.eventName = sceneVoter_;
    eventInfo.eventStatus = state;
    eventInfo.description = sentName;
    rsInterfaces_.NotifyRefreshRateEvent(eventInfo);
    Remember("scene", eventInfo);
    ZEL_LOGI("ZelMoxAdapter SendSceneInfoToMOX sceneName = %{public}s, state = %{public}d", sentName.c_str(),
             static_cast<int>(state));
}

void ZelMoxAdapter::SendThermForceRateFrameToMOX(uint32_t value, bool state)
{
    EventInfo eventInfo;
    eventInfo.eventName = thermalVoter_;
    eventInfo.eventStatus = state;
    eventInfo.minRefreshRate = minRate_;
    eventInfo.maxRefreshRate = value;
    rsInterfaces_.NotifyRefreshRateEvent(eventInfo);
    Remember("thermal", eventInfo);
    ZEL_LOGI("ZelMoxAdapter SendThermForceRateFrameToMOX value = %{public}d, state = %{public}d",
             static_cast<int>(value), static_cast<int>(state));
}

void ZelMoxAdapter::SendPowerToMOX(int32_t mode, bool state)
{
    EventInfo eventInfo;
    eventInfo.eventName = thermalVoter_;
    eventInfo.eventStatus = state;
    eventInfo.minRefreshRate = minRate_;
    eventInfo.maxRefreshRate = static_cast<uint32_t>(mode);
    rsInterfaces_.NotifyRefreshRateEvent(eventInfo);
    Remember("power", eventInfo);
    ZEL_LOGI("ZelMoxAdapter SendPowerToMOX state = %{public}d", static_cast<int>(state));
}

void ZelMoxAdapter::SetLightFactorStatus(bool state)
{
    rsInterfaces_.NotifyLightFactorStatus(state);
    {
        std::lock_guard<std::mutex> lock(recordLock_);
        record_.lightSent = true;
        record_.lightStatus = state;
    }
    ZEL_LOGI("ZelMoxAdapter SetLightFactorStatus success ,state = %{public}d", static_cast<int>(state));
}

void ZelMoxAdapter::Remember(const std::string& kind, const EventInfo& eventInfo)
{
    std::lock_guard<std::mutex> lock(recordLock_);
    record_.votes[kind] = eventInfo;
}

ZelMoxAdapter::Record ZelMoxAdapter::DumpRecord()
{
    std::lock_guard<std::mutex> lock(recordLock_);
    return record_;
}

}  // namespace Tarvo::Vantel
