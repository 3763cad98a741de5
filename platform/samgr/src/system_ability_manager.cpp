#include "system_ability_manager.h"

#include "ipc_types.h"

namespace Tarvo {

SystemAbilityManager::SystemAbilityManager() : IRemoteStub<ISystemAbilityManager>(false) {}

sptr<IRemoteObject> SystemAbilityManager::GetSystemAbility(int32_t systemAbilityId)
{
    return CheckSystemAbility(systemAbilityId);
}

sptr<IRemoteObject> SystemAbilityManager::CheckSystemAbility(int32_t systemAbilityId)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = abilities_.find(systemAbilityId);
    return it != abilities_.end() ? it->second : nullptr;
}

int32_t SystemAbilityManager::AddSystemAbility(int32_t systemAbilityId, const sptr<IRemoteObject>& ability)
{
    if (ability == nullptr || systemAbilityId <= 0) {
        return ERR_INVALID_ABILITY;
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        abilities_[systemAbilityId] = ability;
    }
    NotifyStatus(systemAbilityId, true);
    return 0;
}

int32_t SystemAbilityManager::RemoveSystemAbility(int32_t systemAbilityId)
{
    sptr<IRemoteObject> removed;  // released outside the lock
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = abilities_.find(systemAbilityId);
        if (it == abilities_.end()) {
            return ERR_INVALID_ABILITY;
        }
        removed = it->second;
        abilities_.erase(it);
    }
    NotifyStatus(systemAbilityId, false);
    return 0;
}

int32_t SystemAbilityManager::SubscribeSystemAbility(int32_t systemAbilityId,
                                                     const sptr<ISystemAbilityStatusChange>& listener)
{
    if (listener == nullptr || systemAbilityId <= 0) {
        return ERR_INVALID_ABILITY;
    }
    std::vector<sptr<ISystemAbilityStatusChange>> gone;  // released outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = listeners_.begin(); it != listeners_.end();) {
        sptr<IRemoteObject> object = it->second->AsObject();
        if (object == nullptr || object->IsObjectDead()) {
            gone.push_back(it->second);
            it = listeners_.erase(it);
        } else {
            ++it;
        }
    }
    if (listeners_.size() >= MAX_LISTENERS) {
        return ERR_TOO_MANY_LISTENERS;
    }
    listeners_.emplace(systemAbilityId, listener);
    return 0;
}

void SystemAbilityManager::NotifyStatus(int32_t systemAbilityId, bool added)
{
    std::vector<sptr<ISystemAbilityStatusChange>> listeners;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto [first, last] = listeners_.equal_range(systemAbilityId);
        for (auto it = first; it != last; ++it) {
            listeners.push_back(it->second);
        }
    }
    for (const auto& listener : listeners) {
        if (added) {
            listener->OnAddSystemAbility(systemAbilityId);
        } else {
            listener->OnRemoveSystemAbility(systemAbilityId);
        }
    }
}

std::vector<int32_t> SystemAbilityManager::ListSystemAbilities()
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<int32_t> ids;
    for (const auto& [id, object] : abilities_) {
        ids.push_back(id);
    }
    return ids;
}

int SystemAbilityManager::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                          MessageOption& option)
{
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    switch (code) {
        case GET_SYSTEM_ABILITY:
        case CHECK_SYSTEM_ABILITY:
            return HandleQuery(code, data, reply);
        case ADD_SYSTEM_ABILITY:
            return HandleAdd(data, reply);
        case REMOVE_SYSTEM_ABILITY:
            return HandleRemove(data, reply);
        case SUBSCRIBE_SYSTEM_ABILITY:
            return HandleSubscribe(data, reply);
        case LIST_SYSTEM_ABILITIES: {
            std::vector<int32_t> ids = ListSystemAbilities();
            return reply.WriteInt32Vector(ids) ? ERR_NONE : ERR_INVALID_VALUE;
        }
        default:
            return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
}

int SystemAbilityManager::HandleQuery(uint32_t code, MessageParcel& data, MessageParcel& reply)
{
    int32_t id = 0;
    if (!data.ReadInt32(id)) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> ability = code == GET_SYSTEM_ABILITY ? GetSystemAbility(id) : CheckSystemAbility(id);
    if (!reply.WriteInt32(ability != nullptr ? 1 : 0)) {
        return ERR_INVALID_VALUE;
    }
    if (ability != nullptr && !reply.WriteRemoteObject(ability)) {
        return ERR_INVALID_VALUE;
    }
    return ERR_NONE;
}

int SystemAbilityManager::HandleAdd(MessageParcel& data, MessageParcel& reply)
{
    int32_t id = 0;
    if (!data.ReadInt32(id)) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> ability = data.ReadRemoteObject();
    return reply.WriteInt32(AddSystemAbility(id, ability)) ? ERR_NONE : ERR_INVALID_VALUE;
}

int SystemAbilityManager::HandleRemove(MessageParcel& data, MessageParcel& reply)
{
    int32_t id = 0;
    if (!data.ReadInt32(id)) {
        return ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(RemoveSystemAbility(id)) ? ERR_NONE : ERR_INVALID_VALUE;
}

int SystemAbilityManager::HandleSubscribe(MessageParcel& data, MessageParcel& reply)
{
    int32_t id = 0;
    if (!data.ReadInt32(id)) {
        return ERR_INVALID_VALUE;
    }
    sptr<IRemoteObject> object = data.ReadRemoteObject();
    sptr<ISystemAbilityStatusChange> listener =
        object != nullptr ? iface_cast<ISystemAbilityStatusChange>(object) : nullptr;
    return reply.WriteInt32(SubscribeSystemAbility(id, listener)) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo
