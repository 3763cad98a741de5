#include "app_manager.h"

#include <algorithm>

#include "ipc_types.h"

namespace Tarvo::Emu {
using AppExecFwk::AppStateData;
using AppExecFwk::IApplicationStateObserver;

class AppManager::ObserverDeath : public IRemoteObject::DeathRecipient {
public:
    explicit ObserverDeath(AppManager* manager) : manager_(manager) {}
    void OnRemoteDied(const wptr<IRemoteObject>& object) override
    {
        if (sptr<AppManager> manager = manager_.promote()) {
            manager->RemoveDeadObserver(object.GetRefPtr());
        }
    }

private:
    // Weak: the manager holds the recipient.
    const wptr<AppManager> manager_;
};

AppManager::AppManager() : deathRecipient_(new ObserverDeath(this)) {}

int32_t AppManager::RegisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer,
                                                     const std::vector<std::string>& bundleNameList)
{
    sptr<IRemoteObject> object = observer != nullptr ? observer->AsObject() : nullptr;
    if (object == nullptr) {
        return ERR_INVALID_VALUE;
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (Entry& entry : observers_) {
            if (entry.object == object) {
                entry.bundles = bundleNameList;
                return ERR_NONE;
            }
        }
    }
    // A local observer cannot die apart from the manager: only proxies take recipients.
    if (object->IsProxyObject() && !object->AddDeathRecipient(deathRecipient_)) {
        return ERR_DEAD_OBJECT;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    observers_.push_back({observer, object, bundleNameList});
    return ERR_NONE;
}

int32_t AppManager::UnregisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer)
{
    sptr<IRemoteObject> object = observer != nullptr ? observer->AsObject() : nullptr;
    std::vector<Entry> removed;  // released outside the lock
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = std::stable_partition(observers_.begin(), observers_.end(),
                                        [&object](const Entry& entry) { return entry.object != object; });
        removed.assign(std::make_move_iterator(it), std::make_move_iterator(observers_.end()));
        observers_.erase(it, observers_.end());
    }
    if (object == nullptr || removed.empty()) {
        return ERR_INVALID_VALUE;
    }
    object->RemoveDeathRecipient(deathRecipient_);
    return ERR_NONE;
}

void AppManager::RemoveDeadObserver(const IRemoteObject* object)
{
    std::vector<Entry> removed;  // released after the lock
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = std::stable_partition(observers_.begin(), observers_.end(),
                                    [object](const Entry& entry) { return entry.object.GetRefPtr() != object; });
    removed.assign(std::make_move_iterator(it), std::make_move_iterator(observers_.end()));
    observers_.erase(it, observers_.end());
}

void AppManager::NotifyForegroundApplicationChanged(const AppStateData& data)
{
    std::vector<sptr<IApplicationStateObserver>> targets;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const Entry& entry : observers_) {
            if (entry.bundles.empty() ||
                std::find(entry.bundles.begin(), entry.bundles.end(), data.bundleName) != entry.bundles.end()) {
                targets.push_back(entry.observer);
            }
        }
    }
    for (const auto& observer : targets) {
        observer->OnForegroundApplicationChanged(data);
    }
}

size_t AppManager::ObserverCount() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return observers_.size();
}

void AppManager::Clear()
{
    std::vector<Entry> removed;  // released after the lock
    std::lock_guard<std::mutex> lock(mutex_);
    removed.swap(observers_);
}

}  // namespace Tarvo::Emu
