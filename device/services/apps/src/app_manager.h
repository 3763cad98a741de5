#ifndef ZEL_DEVICE_APPS_APP_MANAGER_H
#define ZEL_DEVICE_APPS_APP_MANAGER_H

// The application manager's object: the registered state observers, each with its bundle filter,
// in registration order. An observer of another process is dropped when that process dies.
// Thread-safe; observers are called without the lock held.

#include <mutex>
#include <string>
#include <vector>

#include "app_mgr_stub.h"

namespace Tarvo::Emu {

class AppManager : public AppExecFwk::AppMgrStub {
public:
    AppManager();
    ~AppManager() override = default;

    // 0 on success (registering an observer again replaces its filter); ERR_INVALID_VALUE for no
    // observer, ERR_DEAD_OBJECT for one whose process is already dead.
    int32_t RegisterApplicationStateObserver(const sptr<AppExecFwk::IApplicationStateObserver>& observer,
                                             const std::vector<std::string>& bundleNameList = {}) override;
    // 0 on success; ERR_INVALID_VALUE for an observer that is not registered.
    int32_t UnregisterApplicationStateObserver(const sptr<AppExecFwk::IApplicationStateObserver>& observer) override;

    // One-way OnForegroundApplicationChanged to every observer whose filter admits the bundle, in
    // registration order. Call it from a thread of the manager's process, whose identity the
    // observers then see.
    void NotifyForegroundApplicationChanged(const AppExecFwk::AppStateData& data);
    size_t ObserverCount() const;
    // Forgets every observer (the manager's process died).
    void Clear();

private:
    class ObserverDeath;
    struct Entry {
        sptr<AppExecFwk::IApplicationStateObserver> observer;
        sptr<IRemoteObject> object;
        std::vector<std::string> bundles;
    };
    void RemoveDeadObserver(const IRemoteObject* object);

    const sptr<IRemoteObject::DeathRecipient> deathRecipient_;
    mutable std::mutex mutex_;
    std::vector<Entry> observers_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_APP_MANAGER_H
