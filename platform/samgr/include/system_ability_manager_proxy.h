#ifndef TARVO_SAMGR_SYSTEM_ABILITY_MANAGER_PROXY_H
#define TARVO_SAMGR_SYSTEM_ABILITY_MANAGER_PROXY_H

#include "if_system_ability_manager.h"
#include "iremote_proxy.h"

namespace Tarvo {

// Any transport failure reads as "not obtainable" (null or an error code), never as an exception.
class SystemAbilityManagerProxy : public IRemoteProxy<ISystemAbilityManager> {
public:
    explicit SystemAbilityManagerProxy(const sptr<IRemoteObject>& impl);

    sptr<IRemoteObject> GetSystemAbility(int32_t systemAbilityId) override;
    sptr<IRemoteObject> CheckSystemAbility(int32_t systemAbilityId) override;
    int32_t AddSystemAbility(int32_t systemAbilityId, const sptr<IRemoteObject>& ability) override;
    int32_t RemoveSystemAbility(int32_t systemAbilityId) override;
    std::vector<int32_t> ListSystemAbilities() override;
    int32_t SubscribeSystemAbility(int32_t systemAbilityId, const sptr<ISystemAbilityStatusChange>& listener) override;

private:
    sptr<IRemoteObject> QueryAbility(uint32_t code, int32_t systemAbilityId);
    int32_t Call(uint32_t code, MessageParcel& data, MessageParcel& reply);
    int32_t CallForResult(uint32_t code, MessageParcel& data);
};

}  // namespace Tarvo

#endif  // TARVO_SAMGR_SYSTEM_ABILITY_MANAGER_PROXY_H
