#include "system_ability_status_change.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo {
namespace {
const BrokerDelegator<SystemAbilityStatusChangeProxy> delegator;
}

int SystemAbilityStatusChangeStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                                   MessageOption& option)
{
    if (code != ON_ADD_SYSTEM_ABILITY && code != ON_REMOVE_SYSTEM_ABILITY) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    int32_t id = 0;
    if (data.ReadInterfaceToken() != GetDescriptor() || !data.ReadInt32(id)) {
        return ERR_INVALID_VALUE;
    }
    if (code == ON_ADD_SYSTEM_ABILITY) {
        OnAddSystemAbility(id);
    } else {
        OnRemoveSystemAbility(id);
    }
    return ERR_NONE;
}

SystemAbilityStatusChangeProxy::SystemAbilityStatusChangeProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<ISystemAbilityStatusChange>(impl)
{
}

void SystemAbilityStatusChangeProxy::OnAddSystemAbility(int32_t systemAbilityId)
{
    SendOneWay(ON_ADD_SYSTEM_ABILITY, systemAbilityId);
}

void SystemAbilityStatusChangeProxy::OnRemoveSystemAbility(int32_t systemAbilityId)
{
    SendOneWay(ON_REMOVE_SYSTEM_ABILITY, systemAbilityId);
}

void SystemAbilityStatusChangeProxy::SendOneWay(uint32_t code, int32_t systemAbilityId)
{
    sptr<IRemoteObject> remote = Remote();
    MessageParcel data;
    if (remote == nullptr || !data.WriteInterfaceToken(GetDescriptor()) || !data.WriteInt32(systemAbilityId)) {
        return;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC);
    remote->SendRequest(code, data, reply, option);
}

}  // namespace Tarvo
