#include "system_ability_cache.h"

#include <mutex>
#include <utility>
#include <vector>

#include "ipc_transport.h"
#include "iservice_registry.h"
#include "system_ability_status_change.h"

namespace Tarvo {

struct SystemAbilityCache::State {
    // What one process holds. `key` names the process only while `session` lives.
    struct Slot {
        std::weak_ptr<ProcessSession> session;
        const ProcessSession* key = nullptr;
        sptr<IRemoteObject> object;
        sptr<IRemoteBroker> broker;
        sptr<IRemoteObject> watcher;
        bool subscribed = false;
        // Moves on each time the kept object is forgotten, so that a lookup begun before does not
        // keep what it found.
        uint64_t generation = 0;
    };

    State(int32_t id, Caster cast) : systemAbilityId(id), caster(cast) {}

    // The process's slot (made if `make`), after dropping those of dead processes into `gone`.
    Slot* Find(const std::shared_ptr<ProcessSession>& session, bool make, std::vector<Slot>& gone)
    {
        Slot* found = nullptr;
        for (auto it = slots.begin(); it != slots.end();) {
            std::shared_ptr<ProcessSession> owner = it->session.lock();
            if (owner == nullptr || !owner->IsAlive()) {
                gone.push_back(std::move(*it));
                it = slots.erase(it);
                continue;
            }
            found = owner == session ? &*it : found;
            ++it;
        }
        if (found == nullptr && make) {
            found = &slots.emplace_back();
            found->session = session;
            found->key = session.get();
        }
        return found;
    }

    // Records the process's subscription and, unless forgotten since `generation`, what it found.
    void Keep(const std::shared_ptr<ProcessSession>& session, const sptr<IRemoteObject>& watcher, uint64_t generation,
              const Found* found)
    {
        std::vector<Slot> gone;  // released outside the lock
        std::lock_guard<std::mutex> lock(mutex);
        Slot* slot = Find(session, true, gone);
        slot->subscribed = true;
        slot->watcher = watcher;
        if (found != nullptr && slot->generation == generation) {
            slot->object = found->object;
            slot->broker = found->broker;
        }
    }

    // Forgets what the process keeps; with `only`, only if that is the object kept.
    void Forget(const ProcessSession* key, const IRemoteObject* only)
    {
        sptr<IRemoteObject> object;  // released outside the lock
        sptr<IRemoteBroker> broker;
        std::lock_guard<std::mutex> lock(mutex);
        for (Slot& slot : slots) {
            if (slot.key == key && (only == nullptr || slot.object.GetRefPtr() == only)) {
                object = std::move(slot.object);
                broker = std::move(slot.broker);
                ++slot.generation;
            }
        }
    }

    const int32_t systemAbilityId;
    const Caster caster;
    std::mutex mutex;
    std::vector<Slot> slots;
};

namespace {
using State = SystemAbilityCache::State;

// Made in the subscribing process, so the service manager's notices run there.
class Watcher : public SystemAbilityStatusChangeStub {
public:
    Watcher(std::weak_ptr<State> state, const ProcessSession* key) : state_(std::move(state)), key_(key) {}
    void OnAddSystemAbility(int32_t systemAbilityId) override { Forget(systemAbilityId); }
    void OnRemoveSystemAbility(int32_t systemAbilityId) override { Forget(systemAbilityId); }

private:
    void Forget(int32_t systemAbilityId)
    {
        std::shared_ptr<State> state = state_.lock();
        if (state != nullptr && state->systemAbilityId == systemAbilityId) {
            state->Forget(key_, nullptr);
        }
    }
    const std::weak_ptr<State> state_;
    const ProcessSession* const key_;
};

class Obituary : public IRemoteObject::DeathRecipient {
public:
    Obituary(std::weak_ptr<State> state, const ProcessSession* key, const IRemoteObject* object)
        : state_(std::move(state)), key_(key), object_(object)
    {
    }
    void OnRemoteDied(const wptr<IRemoteObject>&) override
    {
        if (std::shared_ptr<State> state = state_.lock()) {
            state->Forget(key_, object_);
        }
    }

private:
    const std::weak_ptr<State> state_;
    const ProcessSession* const key_;
    const IRemoteObject* const object_;
};
}  // namespace

SystemAbilityCache::SystemAbilityCache(int32_t systemAbilityId, Caster caster)
    : state_(std::make_shared<State>(systemAbilityId, caster))
{
}

SystemAbilityCache::~SystemAbilityCache() = default;

sptr<IRemoteObject> SystemAbilityCache::GetObject()
{
    return Get().object;
}

sptr<IRemoteBroker> SystemAbilityCache::GetBroker()
{
    return Get().broker;
}

SystemAbilityCache::Found SystemAbilityCache::Get()
{
    std::shared_ptr<ProcessSession> session = IPCTransport::Get().CurrentSession();
    {
        std::vector<State::Slot> gone;  // released outside the lock
        std::lock_guard<std::mutex> lock(state_->mutex);
        State::Slot* slot = state_->Find(session, false, gone);
        if (slot != nullptr && slot->object != nullptr && !slot->object->IsObjectDead()) {
            return {slot->object, slot->broker};
        }
    }
    return Resolve(session);
}

SystemAbilityCache::Found SystemAbilityCache::Resolve(const std::shared_ptr<ProcessSession>& session)
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    if (samgr == nullptr) {
        return {};
    }
    uint64_t generation = 0;
    sptr<IRemoteObject> watcher;
    bool subscribed = false;
    {
        std::vector<State::Slot> gone;  // released outside the lock
        std::lock_guard<std::mutex> lock(state_->mutex);
        State::Slot* slot = state_->Find(session, true, gone);
        generation = slot->generation;
        watcher = slot->watcher;
        subscribed = slot->subscribed;
    }
    if (!subscribed) {
        sptr<Watcher> made = new Watcher(state_, session.get());
        subscribed = samgr->SubscribeSystemAbility(state_->systemAbilityId, made) == 0;
        watcher = made->AsObject();
    }
    Found found;
    found.object = samgr->GetSystemAbility(state_->systemAbilityId);
    found.broker = found.object != nullptr && state_->caster != nullptr ? state_->caster(found.object) : nullptr;
    bool keep = subscribed && found.object != nullptr && (state_->caster == nullptr || found.broker != nullptr);
    // Within its own process the object cannot die apart from the caller.
    if (keep && found.object->IsProxyObject()) {
        keep = found.object->AddDeathRecipient(new Obituary(state_, session.get(), found.object.GetRefPtr()));
    }
    if (subscribed) {
        state_->Keep(session, watcher, generation, keep ? &found : nullptr);
    }
    return found;
}

}  // namespace Tarvo
