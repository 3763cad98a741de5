#include "zel_common_adapter.h"

#include <utility>

#include "frame_rate_control.h"
#include "iremote_broker.h"
#include "iservice_registry.h"
#include "message_option.h"
#include "zel_event_handle.h"
#include "zel_log.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
constexpr const char* AMBIENT_THRESHOLD_KEY = "ambientBrightnessThreshold";
constexpr size_t AMBIENT_THRESHOLD_COUNT = 3;
constexpr uint32_t REGISTER_BRIGHTNESS_CALLBACK = 21;
constexpr uint32_t ON_BRIGHTNESS_CHANGE = 0;
constexpr int BRIGHTNESS_WAIT_SECONDS = 8;
const std::u16string DISPLAY_POWER_MGR_DESCRIPTOR = u"tarvo.displaypowermgr.IDisplayPowerMgr";
const std::u16string BRIGHTNESS_CALLBACK_DESCRIPTOR = u"tarvo.powermgr.IDisplayBrightnessCallback";
}  // namespace

ZelCommonAdapterDeathRecipient::ZelCommonAdapterDeathRecipient(std::function<void(const wptr<IRemoteObject>&)> handler)
    : handler_(std::move(handler))
{
}

void ZelCommonAdapterDeathRecipient::OnRemoteDied(const wptr<IRemoteObject>& remote)
{
    if (handler_) {
        handler_(remote);
    }
}

ZelCommonAdapter* ZelCommonAdapter::GetInstance()
{
    static ZelCommonAdapter instance;
    return &instance;
}

ZelCommonAdapter::ZelCommonAdapter()
{
    // A restarted application manager knows nothing of us: register again, with a longer budget.
    mDeathRecipient = new ZelCommonAdapterDeathRecipient([](const wptr<IRemoteObject>&) {
        ZelCommonAdapter* adapter = ZelCommonAdapter::GetInstance();
        adapter->UnRegisterAppStateObserver();
        adapter->RegisterAppStateObserver(DEATH_RETRY_TIMES);
    });
}

sptr<IRemoteObject> ZelCommonAdapter::GetRemoteObject(int32_t systemAbilityId)
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        ZEL_LOGE("ZelCommonAdapter::GetRemoteObject samgr is null");
        return nullptr;
    }
    return samgr->GetSystemAbility(systemAbilityId);
}

void ZelCommonAdapter::RegisterBrightBrightnessListener()
{
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    auto it = numbers.find(AMBIENT_THRESHOLD_KEY);
    if (it == numbers.end() || it->second.size() != AMBIENT_THRESHOLD_COUNT) {
        ZEL_LOGW(
            "ZelCommonAdapter RegisterBrightBrightnessListener ambient luminance configuration item does not "
            "exist");
        return;
    }
    std::vector<int32_t> thresholds = it->second;
    sptr<IRemoteObject> remote = GetRemoteObject(DISPLAY_POWER_MANAGER_ID);
    if (remote == nullptr) {
        ZEL_LOGE("ZelCommonAdapter::RegisterBrightBrightnessListener Get RemoteObject faild.");
        return;
    }
    if (mBrightnessCallback == nullptr) {
        mBrightnessCallback = new ZelCallbackAdapter(BRIGHTNESS_CALLBACK_DESCRIPTOR);
        mBrightnessCallback->AddTask(ON_BRIGHTNESS_CHANGE, [this](MessageParcel& data, MessageParcel& reply) {
            OnBrightnessChange(data, reply);
        });
    }
    SendBrightnessRegistration(remote, thresholds);
}

bool ZelCommonAdapter::SendBrightnessRegistration(const sptr<IRemoteObject>& remote,
                                                  const std::vector<int32_t>& thresholds)
{
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC, BRIGHTNESS_WAIT_SECONDS);
    if (!data.WriteInterfaceToken(DISPLAY_POWER_MGR_DESCRIPTOR)) {
        ZEL_LOGE("ZelCommonAdapter::RegisterBrightBrightnessListener write interface token failed");
        return false;
    }
    if (!data.WriteInt32Vector(thresholds)) {
        ZEL_LOGE("ZelCommonAdapter::RegisterBrightBrightnessListener threshold write failed.");
        return false;
    }
    if (!data.WriteRemoteObject(mBrightnessCallback->AsObject())) {
        ZEL_LOGE("ZelCommonAdapter::RegisterBrightBrightnessListener observer write failed.");
        return false;
    }
    int32_t ret = remote->SendRequest(REGISTER_BRIGHTNESS_CALLBACK, data, reply, option);
    if (ret != 0) {
        ZEL_LOGE("ZelCommonAdapter::RegisterBrightBrightnessListener Send request error: %{public}d", ret);
        return false;
    }
    ZEL_LOGI("ZelCommonAdapter::RegisterBrightBrightnessListener success, result = %d", reply.ReadInt32());
    return true;
}

void ZelCommonAdapter::OnBrightnessChange(MessageParcel& data, MessageParcel&)
{
    uint32_t type = 0;
    if (!data.ReadUint32(type)) {
        ZEL_LOGE("ZelCommonAdapter::OnBrightnessChange read type faild.");
        return;
    }
    bool state = false;
    if (!data.ReadBool(state)) {
        ZEL_LOGE("ZelCommonAdapter::OnBrightnessChange read state faild.");
        return;
    }
    FrameRateControl::GetInstance()->NotifyLightState(type, state);
}

void ZelCommonAdapter::RegisterAppStateObserver(uint32_t retryTimes)
{
    if (retryTimes == 0) {
        ZEL_LOGE("ZelCommonAdapter::RegisterAppStateObserver Failed to register the package name listener.");
        return;
    }
    // Fetched afresh on every attempt: after a restart the old object is dead. A missing service
    // manager counts as a failed attempt and is retried like one.
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    mAppMgrRemote = samgr != nullptr ? samgr->GetSystemAbility(APP_MGR_SERVICE_ID) : nullptr;
    mAppMgr = mAppMgrRemote != nullptr ? iface_cast<AppExecFwk::IAppMgr>(mAppMgrRemote) : nullptr;
    if (mAppMgr != nullptr && mAppMgrRemote->IsProxyObject() && mAppMgrRemote->AddDeathRecipient(mDeathRecipient)) {
        sptr<AppExecFwk::IApplicationStateObserver> observer = FrameRateControl::GetInstance();
        int32_t result = mAppMgr->RegisterApplicationStateObserver(observer, {});
        ZEL_LOGI("register app result = %{public}d", result);
        if (result != 0) {
            RetryAppStateObserver(retryTimes - 1);
        }
        return;
    }
    ZEL_LOGI("ZelCommonAdapter::RegisterAppStateObserver AddDeathRecipient faild.");
    RetryAppStateObserver(retryTimes - 1);
}

void ZelCommonAdapter::RetryAppStateObserver(uint32_t retryTimes)
{
    EventHandle::GetInstance()->DelayTask(
        [retryTimes]() { ZelCommonAdapter::GetInstance()->RegisterAppStateObserver(retryTimes); }, RETRY_DELAY_MS);
}

void ZelCommonAdapter::UnRegisterAppStateObserver()
{
    if (mAppMgr != nullptr) {
        sptr<AppExecFwk::IApplicationStateObserver> observer = FrameRateControl::GetInstance();
        (void)mAppMgr->UnregisterApplicationStateObserver(observer);
    }
    if (mAppMgrRemote != nullptr && mAppMgrRemote->IsProxyObject()) {
        mAppMgrRemote->RemoveDeathRecipient(mDeathRecipient);
    }
    mAppMgrRemote = nullptr;
    mAppMgr = nullptr;
}

}  // namespace Tarvo::Vantel
