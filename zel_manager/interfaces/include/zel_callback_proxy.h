#ifndef ZEL_MANAGER_ZEL_CALLBACK_PROXY_H
#define ZEL_MANAGER_ZEL_CALLBACK_PROXY_H

#include <atomic>

#include "i_zel_callback_interface.h"
#include "iremote_object.h"
#include "iremote_proxy.h"

namespace Tarvo::Vantel {

// The service's handle on a game's callback. OnGameFpsChange is one-way and returns 0 sent,
// 6 the game died, 2 no remote object, 3 token not written, 5 argument not written or send failed.
class ZelCallbackProxy : public Tarvo::IRemoteProxy<IZelCallbackInterface> {
public:
    // Proxy and recipient hold each other strongly: the pair lives as long as whoever registered
    // the proxy keeps it, and a dead proxy can still answer 6 afterwards.
    class ZelCallbackDeathRecipient : public IRemoteObject::DeathRecipient {
    public:
        explicit ZelCallbackDeathRecipient(const sptr<ZelCallbackProxy>& proxy);
        void OnRemoteDied(const wptr<IRemoteObject>& object) override;

    private:
        sptr<ZelCallbackProxy> proxy_;
    };

    explicit ZelCallbackProxy(const sptr<IRemoteObject>& impl);
    int32_t OnGameFpsChange(uint32_t targetFps) override;

private:
    // Written by the thread delivering the death notice, read by whichever thread notifies.
    std::atomic<bool> isDead_ = false;
    sptr<ZelCallbackDeathRecipient> deathRecipient_;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_CALLBACK_PROXY_H
