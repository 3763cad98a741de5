#include "component_sched_client.h"

#include "component_sched_interface.h"
#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"
#include "system_ability_cache.h"

namespace Tarvo::ComponentScheduler {

ComponentSchedClient& ComponentSchedClient::GetInstance()
{
    static ComponentSchedClient instance;
    return instance;
}

int32_t ComponentSchedClient::GetApptype(const std::string& bundleName, int& type)
{
    // Never destroyed: the kept proxies must not go during static destruction.
    static auto* service = new SystemAbilityCache(COMPONENT_SCHED_SA_ID);
    sptr<IRemoteObject> remote = service->GetObject();
    if (remote == nullptr) {
        return COMPONENT_SCHED_ERR_UNAVAILABLE;
    }
    MessageParcel data;
    if (!data.WriteInterfaceToken(COMPONENT_SCHED_DESCRIPTOR) || !data.WriteString(bundleName)) {
        return COMPONENT_SCHED_ERR_UNAVAILABLE;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    if (remote->SendRequest(GET_APP_TYPE, data, reply, option) != ERR_NONE) {
        return COMPONENT_SCHED_ERR_UNAVAILABLE;
    }
    int32_t result = COMPONENT_SCHED_OK;
    if (!reply.ReadInt32(result)) {
        return COMPONENT_SCHED_ERR_BAD_REPLY;
    }
    if (result != COMPONENT_SCHED_OK) {
        return result;
    }
    int32_t answer = 0;
    if (!reply.ReadInt32(answer)) {
        return COMPONENT_SCHED_ERR_BAD_REPLY;
    }
    type = answer;
    return COMPONENT_SCHED_OK;
}

}  // namespace Tarvo::ComponentScheduler
