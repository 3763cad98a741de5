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
    std::lock_guard<std::mutex> lock(mutex_);
    abilities_[systemAbilityId] = ability;
    return 0;
}

int32_t SystemAbilityManager::RemoveSystemAbility(int32_t systemAbilityId)
{
    sptr<IRemoteObject> removed;  // released outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = abilities_.find(systemAbilityId);
    if (it == abilities_.end()) {
        return ERR_INVALID_ABILITY;
    }
    removed = it->second;
    abilities_.erase(it);
    return 0;
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

}  // namespace Tarvo
