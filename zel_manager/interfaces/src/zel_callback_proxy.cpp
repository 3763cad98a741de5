#include "zel_callback_proxy.h"

#include "message_option.h"
#include "message_parcel.h"
#include "zel_log.h"

namespace Tarvo::Vantel {
namespace {
// Lets the manager's stub turn a game's remote callback object into this proxy.
const BrokerDelegator<ZelCallbackProxy> delegator;

constexpr int32_t CLIENT_DEAD = 6;
constexpr int32_t NOT_READY = 2;
constexpr int32_t TOKEN_FAILED = 3;
constexpr int32_t SEND_FAILED = 5;
constexpr int ONE_WAY_WAIT_TIME = 8;
}  // namespace

ZelCallbackProxy::ZelCallbackProxy(const sptr<IRemoteObject>& impl) : Tarvo::IRemoteProxy<IZelCallbackInterface>(impl)
{
    sptr<IRemoteObject> object = AsObject();
    if (object != nullptr) {
        deathRecipient_ = new ZelCallbackDeathRecipient(sptr<ZelCallbackProxy>(this));
        object->AddDeathRecipient(deathRecipient_);  // refused only by a local stub or an already dead object
        isDead_ = false;
    }
}

// The texts of the token and argument failures name other classes; callers match on them as they are.
int32_t ZelCallbackProxy::OnGameFpsChange(uint32_t targetFps)
{
    if (isDead_) {
        ZEL_LOGE("[ZelCallbackProxy::OnGameFpsChange] client is dead.!");
        return CLIENT_DEAD;
    }
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        ZEL_LOGE("[ZelCallbackProxy::OnGameFpsChange] service is not ready yet!");
        return NOT_READY;
    }
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor())) {
        ZEL_LOGE("[ZelManagerPZelCallbackProxyroxy::OnGameFpsChange] write descriptor failed!");
        return TOKEN_FAILED;
    }
    if (!data.WriteUint32(targetFps)) {
        ZEL_LOGE("[ZelManagerProxy::SetGameFpsForThermalControl] write tagertFps failed!");
        return SEND_FAILED;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC, ONE_WAY_WAIT_TIME);
    int error = remote->SendRequest(ON_GAME_FPS_CHANGE, data, reply, option);
    if (error != 0) {
        ZEL_LOGE("[ZelCallbackProxy::OnGameFpsChange] SendRequest is failed, error code: %{public}d", error);
        return SEND_FAILED;
    }
    return 0;
}

ZelCallbackProxy::ZelCallbackDeathRecipient::ZelCallbackDeathRecipient(const sptr<ZelCallbackProxy>& proxy)
    : proxy_(proxy)
{
}

// Nobody is told: the policy finds out from the next OnGameFpsChange returning 6.
void ZelCallbackProxy::ZelCallbackDeathRecipient::OnRemoteDied(const wptr<IRemoteObject>&)
{
    if (proxy_ == nullptr) {
        return;
    }
    sptr<IRemoteObject> object = proxy_->AsObject();
    if (object != nullptr) {
        object->RemoveDeathRecipient(proxy_->deathRecipient_);
    }
    proxy_->isDead_ = true;
}

}  // namespace Tarvo::Vantel
