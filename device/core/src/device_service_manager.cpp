#include "device_service_manager.h"

namespace Tarvo::Emu {

void DeviceServiceManager::SetObtainable(int32_t systemAbilityId, bool obtainable)
{
    bool changed = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        changed = obtainable ? hidden_.erase(systemAbilityId) != 0 : hidden_.insert(systemAbilityId).second;
    }
    // Holders of the ability hear of it as of a removal or an addition.
    if (changed) {
        NotifyStatus(systemAbilityId, obtainable);
    }
}

bool DeviceServiceManager::IsHidden(int32_t systemAbilityId)
{
    std::lock_guard<std::mutex> lock(mutex_);
    return hidden_.count(systemAbilityId) != 0;
}

sptr<IRemoteObject> DeviceServiceManager::GetSystemAbility(int32_t systemAbilityId)
{
    return IsHidden(systemAbilityId) ? nullptr : SystemAbilityManager::GetSystemAbility(systemAbilityId);
}

sptr<IRemoteObject> DeviceServiceManager::CheckSystemAbility(int32_t systemAbilityId)
{
    return IsHidden(systemAbilityId) ? nullptr : SystemAbilityManager::CheckSystemAbility(systemAbilityId);
}

}  // namespace Tarvo::Emu
