#include "system_ability_manager_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo {
namespace {
const BrokerDelegator<SystemAbilityManagerProxy> delegator;
}

SystemAbilityManagerProxy::SystemAbilityManagerProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<ISystemAbilityManager>(impl)
{
}

int32_t SystemAbilityManagerProxy::Call(uint32_t code, MessageParcel& data, MessageParcel& reply)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    MessageOption option(MessageOption::TF_SYNC);
    return remote->SendRequest(code, data, reply, option);
}

sptr<IRemoteObject> SystemAbilityManagerProxy::QueryAbility(uint32_t code, int32_t systemAbilityId)
{
    MessageParcel data;
    MessageParcel reply;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteInt32(systemAbilityId)) {
        return nullptr;
    }
    int32_t found = 0;
    if (Call(code, data, reply) != ERR_NONE || !reply.ReadInt32(found) || found == 0) {
        return nullptr;
    }
    return reply.ReadRemoteObject();
}

sptr<IRemoteObject> SystemAbilityManagerProxy::GetSystemAbility(int32_t systemAbilityId)
{
    return QueryAbility(GET_SYSTEM_ABILITY, systemAbilityId);
}

sptr<IRemoteObject> SystemAbilityManagerProxy::CheckSystemAbility(int32_t systemAbilityId)
{
    return QueryAbility(CHECK_SYSTEM_ABILITY, systemAbilityId);
}

int32_t SystemAbilityManagerProxy::AddSystemAbility(int32_t systemAbilityId, const sptr<IRemoteObject>& ability)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteInt32(systemAbilityId) ||
        !data.WriteRemoteObject(ability)) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(ADD_SYSTEM_ABILITY, data);
}

int32_t SystemAbilityManagerProxy::RemoveSystemAbility(int32_t systemAbilityId)
{
    MessageParcel data;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteInt32(systemAbilityId)) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(REMOVE_SYSTEM_ABILITY, data);
}

int32_t SystemAbilityManagerProxy::SubscribeSystemAbility(int32_t systemAbilityId,
                                                          const sptr<ISystemAbilityStatusChange>& listener)
{
    MessageParcel data;
    if (listener == nullptr || !data.WriteInterfaceToken(GetDescriptor()) || !data.WriteInt32(systemAbilityId) ||
        !data.WriteRemoteObject(listener->AsObject())) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(SUBSCRIBE_SYSTEM_ABILITY, data);
}

// The transport's error, or else the registry's int32 result.
int32_t SystemAbilityManagerProxy::CallForResult(uint32_t code, MessageParcel& data)
{
    MessageParcel reply;
    int32_t status = Call(code, data, reply);
    if (status != ERR_NONE) {
        return status;
    }
    int32_t result = 0;
    return reply.ReadInt32(result) ? result : ERR_INVALID_VALUE;
}

std::vector<int32_t> SystemAbilityManagerProxy::ListSystemAbilities()
{
    MessageParcel data;
    MessageParcel reply;
    std::vector<int32_t> ids;
    if (!data.WriteInterfaceToken(GetDescriptor()) || Call(LIST_SYSTEM_ABILITIES, data, reply) != ERR_NONE ||
        !reply.ReadInt32Vector(&ids)) {
        return {};
    }
    return ids;
}

}  // namespace Tarvo
