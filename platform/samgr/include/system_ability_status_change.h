#ifndef TARVO_SAMGR_SYSTEM_ABILITY_STATUS_CHANGE_H
#define TARVO_SAMGR_SYSTEM_ABILITY_STATUS_CHANGE_H

// What the service manager tells a subscriber about one system ability: it was added (or replaced
// by another object) or removed (or is no longer obtainable). Only changes after the subscription
// are told.
//
// Wire format: every operation is one-way; data = interface token, int32 id. No reply.

#include <cstdint>

#include "iremote_proxy.h"
#include "iremote_stub.h"

namespace Tarvo {

class ISystemAbilityStatusChange : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.samgr.ISystemAbilityStatusChange");

    enum Code : uint32_t {
        ON_ADD_SYSTEM_ABILITY = 1,
        ON_REMOVE_SYSTEM_ABILITY = 2,
    };

    virtual void OnAddSystemAbility(int32_t systemAbilityId) = 0;
    virtual void OnRemoveSystemAbility(int32_t systemAbilityId) = 0;
};

// A wrong token or a missing id dispatches nothing (ERR_INVALID_VALUE).
class SystemAbilityStatusChangeStub : public IRemoteStub<ISystemAbilityStatusChange> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;
};

class SystemAbilityStatusChangeProxy : public IRemoteProxy<ISystemAbilityStatusChange> {
public:
    explicit SystemAbilityStatusChangeProxy(const sptr<IRemoteObject>& impl);

    void OnAddSystemAbility(int32_t systemAbilityId) override;
    void OnRemoveSystemAbility(int32_t systemAbilityId) override;

private:
    void SendOneWay(uint32_t code, int32_t systemAbilityId);
};

}  // namespace Tarvo

#endif  // TARVO_SAMGR_SYSTEM_ABILITY_STATUS_CHANGE_H
