#include "zel_common_event_subscriber.h"

#include <string>

#include "common_event_support.h"
#include "frame_rate_control.h"
#include "game_fps_policy.h"
#include "zel_log.h"

namespace Tarvo::Vantel {

using EventFwk::CommonEventSupport;

ZelCommonEventSubscriber::ZelCommonEventSubscriber(const EventFwk::CommonEventSubscribeInfo& info)
    : EventFwk::CommonEventSubscriber(info)
{
}

void ZelCommonEventSubscriber::OnReceiveEvent(const EventFwk::CommonEventData& data)
{
    const AAFwk::Want& want = data.GetWant();
    std::string action = want.GetAction();
    // An empty bundle name goes through as read: the policy rejects it with its own message.
    std::string bundleName = want.GetElement().GetBundleName();
    if (action.empty()) {
        ZEL_LOGE("failed, empty action: %{public}s, or invalid event handler", action.c_str());
        return;
    }
    if (action == CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED) {
        GameFpsPolicy::GetInstance()->AddOrRemoveApp(bundleName, true);
        ZEL_LOGI("ZelCommonEventSubscriber::OnReceiveEvent add pkgName = %{public}s", bundleName.c_str());
    } else if (action == CommonEventSupport::COMMON_EVENT_PACKAGE_REMOVED) {
        GameFpsPolicy::GetInstance()->AddOrRemoveApp(bundleName, false);
        ZEL_LOGI("ZelCommonEventSubscriber::OnReceiveEvent remove pkgName = %{public}s", bundleName.c_str());
    } else if (action == CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED) {
        int32_t code = data.GetCode();
        ZEL_LOGI("PowerModeId is %d", code);
        FrameRateControl::PowerModeInterface(static_cast<uint32_t>(code));
    }
}

}  // namespace Tarvo::Vantel
