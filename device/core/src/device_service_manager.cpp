#include "device_service_manager.h"

namespace Tarvo::Emu {

void DeviceServiceManager::SetObtainable(int32_t systemAbilityId, bool obtainable)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (obtainable) {
        hidden_.erase(systemAbilityId);
    } else {
        hidden_.insert(systemAbilityId);
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
