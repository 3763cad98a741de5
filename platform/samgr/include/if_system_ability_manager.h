#ifndef TARVO_SAMGR_IF_SYSTEM_ABILITY_MANAGER_H
#define TARVO_SAMGR_IF_SYSTEM_ABILITY_MANAGER_H

#include <cstdint>
#include <vector>

#include "iremote_broker.h"
#include "iremote_object.h"
#include "system_ability_status_change.h"

namespace Tarvo {

// The service manager: the registry of system abilities by id. It is the driver's context
// object, so any process can reach it without knowing where it runs.
class ISystemAbilityManager : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.samgr.ISystemAbilityManager");

    enum Code : uint32_t {
        GET_SYSTEM_ABILITY = 1,
        CHECK_SYSTEM_ABILITY = 2,
        ADD_SYSTEM_ABILITY = 3,
        REMOVE_SYSTEM_ABILITY = 4,
        LIST_SYSTEM_ABILITIES = 5,
        SUBSCRIBE_SYSTEM_ABILITY = 6,
    };

    // The ability's object, or null when it is not obtainable.
    virtual sptr<IRemoteObject> GetSystemAbility(int32_t systemAbilityId) = 0;
    virtual sptr<IRemoteObject> CheckSystemAbility(int32_t systemAbilityId) = 0;
    // 0 on success; a later add of the same id replaces the object.
    virtual int32_t AddSystemAbility(int32_t systemAbilityId, const sptr<IRemoteObject>& ability) = 0;
    virtual int32_t RemoveSystemAbility(int32_t systemAbilityId) = 0;
    // Ids of the obtainable abilities, ascending.
    virtual std::vector<int32_t> ListSystemAbilities() = 0;
    // 0 once `listener` will be told of the ability's later changes, for as long as its process lives.
    virtual int32_t SubscribeSystemAbility(int32_t systemAbilityId,
                                           const sptr<ISystemAbilityStatusChange>& listener) = 0;
};

}  // namespace Tarvo

#endif  // TARVO_SAMGR_IF_SYSTEM_ABILITY_MANAGER_H
