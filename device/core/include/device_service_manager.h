#ifndef ZEL_DEVICE_DEVICE_SERVICE_MANAGER_H
#define ZEL_DEVICE_DEVICE_SERVICE_MANAGER_H

#include <mutex>
#include <set>

#include "system_ability_manager.h"

namespace Tarvo::Emu {

// The device's service manager: the platform registry, with abilities that can be made
// unobtainable (they stay registered and come back when made obtainable again).
class DeviceServiceManager : public SystemAbilityManager {
public:
    void SetObtainable(int32_t systemAbilityId, bool obtainable);

    sptr<IRemoteObject> GetSystemAbility(int32_t systemAbilityId) override;
    sptr<IRemoteObject> CheckSystemAbility(int32_t systemAbilityId) override;

private:
    bool IsHidden(int32_t systemAbilityId);

    std::mutex mutex_;
    std::set<int32_t> hidden_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_SERVICE_MANAGER_H
