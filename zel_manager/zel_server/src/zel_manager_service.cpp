#include "zel_manager_service.h"

#include <cstdio>

#include "common_event_manager.h"
#include "common_event_support.h"
#include "frame_rate_control.h"
#include "game_fps_policy.h"
#include "ipc_skeleton.h"
#include "iservice_registry.h"
#include "matching_skills.h"
#include "resolution_manager.h"
#include "zel_bundle_mgr_adapter.h"
#include "zel_common_adapter.h"
#include "zel_dump.h"
#include "zel_log.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
// The host collects what this registered; the flag is kept only for inspection.
const bool REGISTER_RESULT = Tarvo::SystemAbility::MakeAndRegisterAbility(
    new ZelManagerService(ZelManagerService::ZEL_MANAGER_SERVICE_ID, true));

constexpr uint32_t GAME_FPS_REFUSED = 1;
constexpr uint32_t THERMAL_POLICY_DONE = 1;
constexpr uint32_t APP_STATE_OBSERVER_RETRY_TIMES = 3;
constexpr uint32_t GAME_PKG_QUERY_RETRY_TIMES = 5;
constexpr uint32_t THERMAL_FORCE_KEY = 101;
constexpr int32_t DUMP_WRITE_FAILED = -1;

}  // namespace

ZelManagerService::ZelManagerService(int32_t systemAbilityId, bool runOnCreate)
    : SystemAbility(systemAbilityId, runOnCreate), handler_(EventHandle::GetInstance())
{
    (void)REGISTER_RESULT;
    ZEL_LOGI("ZelManagerService init");
}

ZelManagerService::~ZelManagerService()
{
    ZEL_LOGI("ZelManagerService end");
}

void ZelManagerService::OnStart()
{
    ZEL_LOGI("ZelManagerService OnStart");
    handler_->DelayTask([this]() { InitServiceState(); }, START_RETRY_DELAY_MS);
    Publish(this);
}

void ZelManagerService::InitServiceState()
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        ZEL_LOGI("GetSystemAbilityManager fail!");
        handler_->DelayTask([this]() { InitServiceState(); }, START_RETRY_DELAY_MS);
        return;
    }
    // Our own id is among them on purpose: start-up also waits until our publication is visible.
    for (int32_t id : kRequiredSystemAbilityIds) {
        if (samgr->GetSystemAbility(id) == nullptr) {
            ZEL_LOGI("request system service object is not ready yet!");
            handler_->DelayTask([this]() { InitServiceState(); }, START_RETRY_DELAY_MS);
            return;
        }
    }
    ZelCommonAdapter::GetInstance()->RegisterAppStateObserver(APP_STATE_OBSERVER_RETRY_TIMES);
    // Read once; the scene catalogue and every switch and bound come from it.
    if (ZelManagerConfig::LoadConfigXml()) {
        ResolutionManager::GetInstance()->ConfigureResolutionMode();
        ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
        GameFpsPolicy::GetInstance()->SetMaxCallbackSize();
        GameFpsPolicy::GetInstance()->SetGameFpsSwtich();
    } else {
        // Through the instance, so the manager (and its event handle) exists from start-up on.
        ResolutionManager::GetInstance()->InitDefaultResolutionMode();
    }
    handler_->ExecuteAsyncTask([]() { GameFpsPolicy::GetInstance()->QueryGamePkg({}, GAME_PKG_QUERY_RETRY_TIMES); });
    RegisterCommonEventListener();
}

void ZelManagerService::RegisterCommonEventListener()
{
    if (subscriber_ != nullptr) {
        ZEL_LOGE("ZelManagerService::RegisterCommonEventListener common event has been registered.");
        return;
    }
    EventFwk::MatchingSkills matchingSkills;
    matchingSkills.AddEvent(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED);
    matchingSkills.AddEvent(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_REMOVED);
    matchingSkills.AddEvent(EventFwk::CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED);
    EventFwk::CommonEventSubscribeInfo subscribeInfo(matchingSkills);
    subscribeInfo.SetThreadMode(EventFwk::CommonEventSubscribeInfo::COMMON);
    // Kept even when subscribing fails: a later call reports it registered rather than retrying.
    subscriber_ = std::make_shared<ZelCommonEventSubscriber>(subscribeInfo);
    if (EventFwk::CommonEventManager::SubscribeCommonEvent(subscriber_)) {
        ZEL_LOGI("subscribeCommonEvent subscribed success.");
    } else {
        ZEL_LOGE("subscribeCommonEvent subscribed failure.");
    }
}

void ZelManagerService::OnStop()
{
    ZelCommonAdapter::GetInstance()->UnRegisterAppStateObserver();
    // Unsubscribed twice on purpose; neither result matters at stop.
    if (subscriber_ != nullptr) {
        (void)EventFwk::CommonEventManager::UnSubscribeCommonEvent(subscriber_);
    }
    if (subscriber_ != nullptr) {
        (void)EventFwk::CommonEventManager::UnSubscribeCommonEvent(subscriber_);
    }
    ZEL_LOGI("ZelManagerService OnStop");
}

void ZelManagerService::SetScene(const std::string& pkgName, const std::string& sceneName, uint32_t state)
{
    std::string pkg = pkgName;
    std::string scene = sceneName;
    FrameRateControl::GetInstance()->SetScene(pkg, scene, static_cast<int32_t>(state));
}

int32_t ZelManagerService::ChangeResolutionMode(int32_t mode, int32_t flag)
{
    // "success" is logged before the work is done, on purpose: the result is always 0.
    ZEL_LOGI("call ChangeResolutionMode success, mode = %d, flag=%d", mode, flag);
    ResolutionManager::GetInstance()->SetResolutionMode(mode, flag);
    return 0;
}

uint32_t ZelManagerService::SetThermalPolicy(std::map<uint32_t, uint32_t> policy)
{
    // Only the forced frame rate is ours; every other key belongs to other thermal actors.
    auto forced = policy.find(THERMAL_FORCE_KEY);
    if (forced != policy.end()) {
        FrameRateControl::GetInstance()->ThermalForceInterface(forced->second);
    }
    ZEL_LOGI("ZelManagerService SetThermalPolicy recv map");
    return THERMAL_POLICY_DONE;
}

// The package is never taken from the request: a game can only register for itself.
uint32_t ZelManagerService::RegisterGameFpsListener(sptr<IZelCallbackInterface>& callback)
{
    std::string pkgName;
    if (!ZelBundleMgrAdapter::GetInstance()->GetPkgNameByUid(IPCSkeleton::GetCallingUid(), pkgName)) {
        return GAME_FPS_REFUSED;
    }
    return static_cast<uint32_t>(GameFpsPolicy::GetInstance()->RegisterGameFpsListener(pkgName, callback));
}

uint32_t ZelManagerService::SetGameFpsForThermalControl(const std::string& pkgName, uint32_t fps)
{
    return static_cast<uint32_t>(GameFpsPolicy::GetInstance()->SetGameFpsForThermalControl(pkgName, fps));
}

int32_t ZelManagerService::Dump(int32_t fd, const std::vector<std::u16string>& args)
{
    bool json = false;
    for (const auto& arg : args) {
        json = json || arg == u"--json";
    }
    ServiceDump dump = CollectServiceDump();
    std::string text = json ? DumpJson(dump) + "\n" : DumpText(dump);
    return dprintf(fd, "%s", text.c_str()) < 0 ? DUMP_WRITE_FAILED : 0;
}

}  // namespace Tarvo::Vantel
