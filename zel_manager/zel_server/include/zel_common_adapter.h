#ifndef ZEL_MANAGER_ZEL_COMMON_ADAPTER_H
#define ZEL_MANAGER_ZEL_COMMON_ADAPTER_H

#include <cstdint>
#include <functional>
#include <vector>

#include "app_mgr_interface.h"
#include "iremote_object.h"
#include "message_parcel.h"
#include "refbase.h"
#include "zel_callback_adapter.h"

namespace Tarvo::Vantel {

// Hands a death notice to whoever made the recipient.
class ZelCommonAdapterDeathRecipient : public IRemoteObject::DeathRecipient {
public:
    explicit ZelCommonAdapterDeathRecipient(std::function<void(const wptr<IRemoteObject>&)> handler);
    void OnRemoteDied(const wptr<IRemoteObject>& remote) override;

private:
    std::function<void(const wptr<IRemoteObject>&)> handler_;
};

// Connects frame-rate control to the application manager (foreground changes, through the
// application-state observer) and to the display power manager (ambient-brightness callbacks).
// When the application manager dies the observer is registered again on the new one.
//
// No lock: start-up and death notices come from different threads, retries run on the task queue.
class ZelCommonAdapter {
public:
    static constexpr int32_t APP_MGR_SERVICE_ID = 501;
    static constexpr int32_t DISPLAY_POWER_MANAGER_ID = 3308;
    static constexpr uint32_t DEATH_RETRY_TIMES = 10;
    static constexpr int64_t RETRY_DELAY_MS = 5000;

    static ZelCommonAdapter* GetInstance();

    sptr<IRemoteObject> GetRemoteObject(int32_t systemAbilityId);
    void RegisterBrightBrightnessListener();
    void OnBrightnessChange(MessageParcel& data, MessageParcel& reply);
    void RegisterAppStateObserver(uint32_t retryTimes);
    void UnRegisterAppStateObserver();

    ZelCommonAdapter(const ZelCommonAdapter&) = delete;
    ZelCommonAdapter& operator=(const ZelCommonAdapter&) = delete;

private:
    ZelCommonAdapter();
    ~ZelCommonAdapter() = default;

    bool SendBrightnessRegistration(const sptr<IRemoteObject>& remote, const std::vector<int32_t>& thresholds);
    void RetryAppStateObserver(uint32_t retryTimes);

    sptr<ZelCallbackAdapter> mBrightnessCallback;
    sptr<IRemoteObject> mAppMgrRemote;
    sptr<ZelCommonAdapterDeathRecipient> mDeathRecipient;
    sptr<AppExecFwk::IAppMgr> mAppMgr;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_COMMON_ADAPTER_H
