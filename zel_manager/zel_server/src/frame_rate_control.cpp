#include "frame_rate_control.h"

#include <algorithm>

#include "component_sched_client.h"
#include "zel_log.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
constexpr int32_t SCENE_EXIT = 0;
constexpr int32_t SCENE_ENTER = 1;
constexpr int32_t SCENE_EXIT_ALL = 2;
constexpr int32_t UNKNOWN_APP_TYPE = -1;

const std::string INTERRUPTIBLE_VALUE = "1";
const std::string DESKTOP_PKG_NAME = "com.tarvo.vistadeck";
const std::string SCENE_BACK_DESKTOP = "BACK_DESKTOP";
const std::string SCENE_FOLLOW_HAND = "FOLLOW_HAND";
const std::string SCENE_S_DDN = "S_DDN";
const std::string SCENE_BACK_ORIGIN_APP = "BACK_ORIGIN_APP";
const std::string SCENE_START_APP_FROM_MULTIPLE_TASKBARS = "START_APP_FROM_MULTIPLE_TASKBARS";
const std::string ANIMATION_DELAYED_DELETE = "ANIMATION_DELAYED_DELETE";

constexpr int32_t APP_STATE_FOREGROUND = 2;
constexpr int32_t APP_STATE_BACKGROUND = 4;
constexpr uint32_t POWER_MODE_SAVE = 601;
constexpr uint32_t POWER_MODE_SAVE_VARIANT_BIT = 2;
constexpr int32_t DEFAULT_POWER_RATE = 120;
constexpr size_t POWER_RATE_PAIR_SIZE = 2;
constexpr uint32_t LIGHT_TYPE_0 = 0;
constexpr uint32_t LIGHT_TYPE_1 = 1;
const std::string POWER_MODE_KEY = "powermode";

bool SwitchesToDesktop(const std::string& sceneName)
{
    return sceneName == SCENE_FOLLOW_HAND || sceneName == SCENE_BACK_DESKTOP || sceneName == SCENE_S_DDN;
}

bool RestoresOrigin(const std::string& sceneName)
{
    return sceneName == SCENE_BACK_ORIGIN_APP || sceneName == SCENE_START_APP_FROM_MULTIPLE_TASKBARS;
}

std::vector<SceneInfo>::iterator FindWaiting(std::vector<SceneInfo>& queue, const std::string& sceneName)
{
    return std::find_if(queue.begin(), queue.end(),
                        [&sceneName](const SceneInfo& waiting) { return waiting.sceneName == sceneName; });
}
}  // namespace

sptr<FrameRateControl> FrameRateControl::GetInstance()
{
    // Always under the lock: the reference itself is not atomic.
    std::lock_guard<std::mutex> lock(instanceLock_);
    if (instance_ == nullptr) {
        instance_ = new FrameRateControl();
    }
    return instance_;
}

FrameRateControl::FrameRateControl()
    : moxAdapter_(ZelMoxAdapter::GetInstance()), eventHandle_(EventHandle::GetInstance())
{
}

FrameRateControl::~FrameRateControl() = default;

void FrameRateControl::SetBasicSceneAttributes(std::string name, std::string interruptible)
{
    ZEL_LOGD("FrameRateControl::SetBasicSceneAttributes name = %{public}s, interruptible = %{public}s", name.c_str(),
             interruptible.c_str());
    sSceneConfig[name] = SceneInfo{name, "", interruptible == INTERRUPTIBLE_VALUE, 1};
}

SceneInfo FrameRateControl::findSceneInfo(std::string sceneName)
{
    auto it = sSceneConfig.find(sceneName);
    if (it == sSceneConfig.end()) {
        ZEL_LOGW("FrameRateControl findSceneInfo not exists scene");
        return SceneInfo{"", "", true, 1};
    }
    // A fresh request: the configured count is not carried over.
    return SceneInfo{sceneName, "", it->second.interruptible, 1};
}

void FrameRateControl::SetScene(std::string pkgName, std::string sceneName, int32_t state)
{
    ZEL_LOGI("SetScene pkgName = %{public}s, scene = %{public}s, state = %{public}d", pkgName.c_str(),
             sceneName.c_str(), state);
    SceneInfo info = findSceneInfo(sceneName);
    info.pkgName = pkgName;
    if (info.sceneName.empty()) {
        ZEL_LOGW("FrameRateControl removeSceneInfo: unknow scene!");
        return;
    }
    switch (state) {
        case SCENE_EXIT:
            RemoveSceneInfo(info, false);
            break;
        case SCENE_EXIT_ALL:
            RemoveSceneInfo(info, true);
            break;
        case SCENE_ENTER:
            SetSceneInfo(info);
            break;
        default:
            ZEL_LOGW("FrameRateControl removeSceneInfo: unknow state!");
            break;
    }
}

void FrameRateControl::SetSceneInfo(SceneInfo info)
{
    std::lock_guard<std::recursive_mutex> lock(sceneLock);
    if (info.sceneName == SCENE_BACK_DESKTOP) {
        pendingPkgName.clear();
        originPkgName.clear();
    }
    if (curSceneInfo != nullptr && !curSceneInfo->interruptible) {
        EnterWhileFreezing(info);
        return;
    }
    auto active = sceneInfoMap.find(info.sceneName);
    if (active != sceneInfoMap.end()) {
        active->second.enterCount++;
        return;
    }
    if (!info.interruptible && SwitchesToDesktop(info.sceneName) && curPkgName != DESKTOP_PKG_NAME) {
        if (info.sceneName == SCENE_FOLLOW_HAND) {
            pendingPkgName.clear();
            originPkgName = curPkgName;
        }
        // No freezing scene is current, so this also drops every active and waiting scene.
        NotifyPkgChange(DESKTOP_PKG_NAME);
    }
    EnterScene(info);
}

// A freezing scene is current: later arrivals only wait or count.
void FrameRateControl::EnterWhileFreezing(const SceneInfo& info)
{
    auto active = sceneInfoMap.find(info.sceneName);
    if (active != sceneInfoMap.end()) {
        active->second.enterCount++;
        if (curSceneInfo->sceneName == info.sceneName) {
            ArmDelayedDelete(info);
        }
        return;
    }
    auto waiting = FindWaiting(waitQueue, info.sceneName);
    if (waiting != waitQueue.end()) {
        waiting->enterCount++;
        return;
    }
    waitQueue.push_back(info);
}

void FrameRateControl::EnterScene(const SceneInfo& info)
{
    auto inserted = sceneInfoMap.insert_or_assign(info.sceneName, info);
    curSceneInfo = &inserted.first->second;
    moxAdapter_->SendSceneInfoToMOX(info.sceneName, true);
    if (!info.interruptible) {
        ArmDelayedDelete(info);
    }
}

// The safety net for a freezing scene whose exit never comes; replaces any pending one.
void FrameRateControl::ArmDelayedDelete(const SceneInfo& info)
{
    // The task holds its own reference: it may still be pending when the process winds down.
    sptr<FrameRateControl> self(this);
    eventHandle_->SetAnimationDelayDelete([self, info]() { self->RemoveSceneInfo(info, true); });
}

void FrameRateControl::RemoveSceneInfo(SceneInfo info, bool force)
{
    std::lock_guard<std::recursive_mutex> lock(sceneLock);
    if (info.sceneName.empty()) {
        ZEL_LOGW("FrameRateControl removeSceneInfo: unknow scene!");
        return;
    }
    auto active = sceneInfoMap.find(info.sceneName);
    if (active == sceneInfoMap.end()) {
        RemoveSceneInfoFromWaitQueue(info, force);
        return;
    }
    int32_t& count = active->second.enterCount;
    if (count != 0) {
        count = force ? 0 : count - 1;
        if (count != 0) {
            return;
        }
    }
    RemoveSceneInfoInner(active->second);
}

void FrameRateControl::RemoveSceneInfoInner(SceneInfo info)
{
    moxAdapter_->SendSceneInfoToMOX(info.sceneName, false);
    // Decide before erasing: curSceneInfo may point at the entry about to go.
    bool otherIsCurrent = curSceneInfo != nullptr && curSceneInfo->sceneName != info.sceneName;
    if (!otherIsCurrent) {
        curSceneInfo = nullptr;
    }
    sceneInfoMap.erase(info.sceneName);
    if (otherIsCurrent || info.interruptible) {
        return;
    }
    ZEL_LOGI("FrameRateControl removeSceneInfo stop freezing scene for scene");
    eventHandle_->RemoveEvent(ANIMATION_DELAYED_DELETE);
    if (!waitQueue.empty()) {
        // Oldest first, with the enters it gathered while waiting.
        SceneInfo next = waitQueue.front();
        waitQueue.erase(waitQueue.begin());
        SetSceneInfo(next);
        return;
    }
    RestoreForeground(info);
}

void FrameRateControl::RestoreForeground(const SceneInfo& ended)
{
    if (RestoresOrigin(ended.sceneName) && pendingPkgName.empty() && !originPkgName.empty()) {
        NotifyPkgChange(originPkgName);
        originPkgName.clear();
        return;
    }
    // pendingPkgName stays: a later end re-sends it and NotifyPkgChange drops it as a repeat.
    if (!pendingPkgName.empty()) {
        NotifyPkgChange(pendingPkgName);
    }
}

void FrameRateControl::RemoveSceneInfoFromWaitQueue(SceneInfo info, bool force)
{
    auto waiting = FindWaiting(waitQueue, info.sceneName);
    if (waiting == waitQueue.end()) {
        ZEL_LOGW("FrameRateControl removeSceneInfoFromWaitQueue: receive %{public}s scene exit before scene in",
                 info.sceneName.c_str());
        return;
    }
    ZEL_LOGI("FrameRateControl removeSceneInfo current scene is non-interruption, remove from wait queue");
    if (waiting->enterCount != 0) {
        waiting->enterCount = force ? 0 : waiting->enterCount - 1;
        if (waiting->enterCount != 0) {
            return;
        }
    }
    waitQueue.erase(waiting);
}

void FrameRateControl::NotifyPkgChange(std::string pkgName)
{
    if (pkgName == curPkgName) {
        ZEL_LOGI("FrameRateControl NotifyPkgChange pkgName repeat.");
        return;
    }
    if (curSceneInfo != nullptr && !curSceneInfo->interruptible) {
        ZEL_LOGI("FrameRateControl NotifyPkgNameChange, cat't chane pkg, please wait");
        pendingPkgName = pkgName;
        return;
    }
    // A new foreground package starts from a clean slate; the dropped scenes get no end message.
    waitQueue.clear();
    curSceneInfo = nullptr;
    sceneInfoMap.clear();
    curPkgName = pkgName;

    int type = UNKNOWN_APP_TYPE;
    (void)ComponentScheduler::ComponentSchedClient::GetInstance().GetApptype(curPkgName, type);
    ZEL_LOGI("bundleName:%{public}s,pkgType:%{public}d", curPkgName.c_str(), type);
    auto id = pkgIdMap.find(curPkgName);
    int32_t pkgId = id == pkgIdMap.end() ? 0 : id->second;
    std::string report = curPkgName + ":" + std::to_string(pkgId) + ":" + std::to_string(type);
    moxAdapter_->SendPkgToMOX(std::vector<std::string>{report});
    ZEL_LOGI("FrameRateControl send pkg = %{public}s to MOX success", curPkgName.c_str());
}

void FrameRateControl::OnForegroundApplicationChanged(const AppExecFwk::AppStateData& appStateData)
{
    std::string pkgName = appStateData.bundleName;
    int32_t state = appStateData.state;
    ZEL_LOGD(
        "FrameRateControl OnForegroundApplicationChanged pkgName = %{public}s, focus = %{public}d, state = "
        "%{public}d",
        pkgName.c_str(), static_cast<int>(appStateData.isFocused), state);
    if (pkgName.empty()) {
        // Logged only: an unnamed record still moves the stack like any other.
        ZEL_LOGI("FrameRateControl OnForegroundApplicationChanged Invalid package name.");
    }
    if (pkgName == DESKTOP_PKG_NAME) {
        // The desktop stays foreground under other windows; only its focus tells whether it is seen.
        state = appStateData.isFocused ? APP_STATE_FOREGROUND : APP_STATE_BACKGROUND;
    }
    std::lock_guard<std::recursive_mutex> lock(sceneLock);
    if (state == APP_STATE_FOREGROUND) {
        PushForeground(pkgName, appStateData.pid);
    } else if (state == APP_STATE_BACKGROUND) {
        PopForeground(pkgName);
    }
}

void FrameRateControl::PushForeground(const std::string& pkgName, int32_t pid)
{
    if (!foregroundPkgList.empty() && foregroundPkgList.back() == pkgName) {
        ZEL_LOGD("FrameRateControl OnForegroundApplicationChanged Repeatedly enter the package name.");
        return;
    }
    foregroundPkgList.remove(pkgName);
    foregroundPkgList.push_back(pkgName);
    pkgIdMap[pkgName] = pid;
    NotifyPkgChange(pkgName);
}

void FrameRateControl::PopForeground(const std::string& pkgName)
{
    if (foregroundPkgList.empty()) {
        ZEL_LOGI("FrameRateControl OnForegroundApplicationChanged No package name exit.");
        return;
    }
    if (foregroundPkgList.back() != pkgName) {
        // Something behind the top left: what the arbiter sees does not change.
        foregroundPkgList.remove(pkgName);
        return;
    }
    foregroundPkgList.remove(pkgName);
    if (foregroundPkgList.empty()) {
        // Nothing to hand the foreground to: the last report stands, with its id.
        return;
    }
    pkgIdMap.erase(pkgName);
    NotifyPkgChange(foregroundPkgList.back());
}

void FrameRateControl::PowerModeInterface(uint32_t mode)
{
    int32_t rate = DEFAULT_POWER_RATE;
    const auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    auto pair = numbers.find(POWER_MODE_KEY);
    if (pair != numbers.end() && pair->second.size() == POWER_RATE_PAIR_SIZE) {
        // Every mode but 601 takes the second value, its variant 603 included.
        rate = mode == POWER_MODE_SAVE ? pair->second[0] : pair->second[1];
    }
    bool saving = (mode & ~POWER_MODE_SAVE_VARIANT_BIT) == POWER_MODE_SAVE;
    ZelMoxAdapter::GetInstance()->SendPowerToMOX(rate, saving);
    ZEL_LOGI("FrameRateControl SetPowerModeFrameRate send to MOX success");
}

void FrameRateControl::ThermalForceInterface(uint32_t value)
{
    if (value == thermForceValue) {
        ZEL_LOGW("FrameRateControl SetThermForceFrameRate repeat operation");
        return;
    }
    if (value != 0) {
        moxAdapter_->SendThermForceRateFrameToMOX(value, true);
    } else {
        // The arbiter withdraws a vote by the rate it was cast with.
        moxAdapter_->SendThermForceRateFrameToMOX(thermForceValue, false);
    }
    thermForceValue = value;
    ZEL_LOGI("FrameRateControl SetThermForceFrameRate send to MXO success");
}

void FrameRateControl::NotifyLightState(uint32_t type, bool state)
{
    ZEL_LOGI("FrameRateControl  NotifyLightState type = %{public}d, state = %{public}d", static_cast<int>(type),
             static_cast<int>(state));
    if (type == LIGHT_TYPE_1) {
        lightStateType1 = state;
    } else if (type == LIGHT_TYPE_0) {
        lightStateType0 = state;
    }
    bool status = !(lightStateType1 && lightStateType0);
    if (status == lightFactorStatus) {
        return;
    }
    lightFactorStatus = status;
    moxAdapter_->SetLightFactorStatus(status);
    ZEL_LOGI("FrameRateControl  NotifyLightState state = %{public}d", static_cast<int>(status));
}

void FrameRateControl::SetLightAndBrightnessThreshold()
{
    ZEL_LOGI("FrameRateControl SetLightRange success");
}

FrameRateControl::State FrameRateControl::DumpState()
{
    State state;
    state.thermForceValue = thermForceValue;
    state.lightStateType0 = lightStateType0;
    state.lightStateType1 = lightStateType1;
    state.lightFactorStatus = lightFactorStatus;
    std::lock_guard<std::recursive_mutex> lock(sceneLock);
    state.foreground.assign(foregroundPkgList.begin(), foregroundPkgList.end());
    state.curPkgName = curPkgName;
    state.pendingPkgName = pendingPkgName;
    state.originPkgName = originPkgName;
    state.pkgIds = pkgIdMap;
    for (const auto& [name, info] : sceneInfoMap) {
        state.activeScenes.push_back(info);
    }
    state.currentScene = curSceneInfo != nullptr ? curSceneInfo->sceneName : "";
    state.waitQueue = waitQueue;
    return state;
}

}  // namespace Tarvo::Vantel
