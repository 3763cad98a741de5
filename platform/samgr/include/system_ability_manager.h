#ifndef TARVO_SAMGR_SYSTEM_ABILITY_MANAGER_H
#define TARVO_SAMGR_SYSTEM_ABILITY_MANAGER_H

#include <map>
#include <mutex>

#include "if_system_ability_manager.h"
#include "iremote_stub.h"

namespace Tarvo {

// The registry itself. Whoever hosts it (a device's service-manager process, a test) creates it
// in its process and installs it with IPCSkeleton::SetContextObject.
//
// Wire format (after the interface token):
//   GET/CHECK:  data int32 id;               reply int32 found (0/1), then the object if found
//   ADD:        data int32 id, object;       reply int32 result
//   REMOVE:     data int32 id;               reply int32 result
//   LIST:       data -;                      reply int32 vector of ids
//   SUBSCRIBE:  data int32 id, listener;     reply int32 result
// Subscribers are told (one-way, outside the lock) when an ability is added, replaced or removed;
// a dead subscriber is forgotten.
class SystemAbilityManager : public IRemoteStub<ISystemAbilityManager> {
public:
    static constexpr int32_t ERR_INVALID_ABILITY = 1;
    static constexpr int32_t ERR_TOO_MANY_LISTENERS = 2;
    // Bounds what other processes can make the registry keep.
    static constexpr size_t MAX_LISTENERS = 1024;

    SystemAbilityManager();

    sptr<IRemoteObject> GetSystemAbility(int32_t systemAbilityId) override;
    sptr<IRemoteObject> CheckSystemAbility(int32_t systemAbilityId) override;
    int32_t AddSystemAbility(int32_t systemAbilityId, const sptr<IRemoteObject>& ability) override;
    int32_t RemoveSystemAbility(int32_t systemAbilityId) override;
    std::vector<int32_t> ListSystemAbilities() override;
    int32_t SubscribeSystemAbility(int32_t systemAbilityId, const sptr<ISystemAbilityStatusChange>& listener) override;

    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

protected:
    // Tells the ability's subscribers; call without holding any lock.
    void NotifyStatus(int32_t systemAbilityId, bool added);

private:
    int HandleQuery(uint32_t code, MessageParcel& data, MessageParcel& reply);
    int HandleAdd(MessageParcel& data, MessageParcel& reply);
    int HandleRemove(MessageParcel& data, MessageParcel& reply);
    int HandleSubscribe(MessageParcel& data, MessageParcel& reply);

    std::mutex mutex_;
    std::map<int32_t, sptr<IRemoteObject>> abilities_;
    std::multimap<int32_t, sptr<ISystemAbilityStatusChange>> listeners_;
};

}  // namespace Tarvo

#endif  // TARVO_SAMGR_SYSTEM_ABILITY_MANAGER_H
