#include "app_mgr_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::AppExecFwk {
namespace {
const BrokerDelegator<AppMgrProxy> delegator;
}

AppMgrProxy::AppMgrProxy(const sptr<IRemoteObject>& impl) : IRemoteProxy<IAppMgr>(impl) {}

int32_t AppMgrProxy::RegisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer,
                                                      const std::vector<std::string>& bundleNameList)
{
    MessageParcel data;
    if (observer == nullptr || !data.WriteInterfaceToken(GetDescriptor()) ||
        !data.WriteRemoteObject(observer->AsObject()) || !data.WriteStringVector(bundleNameList)) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(REGISTER_APPLICATION_STATE_OBSERVER, data);
}

int32_t AppMgrProxy::UnregisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer)
{
    MessageParcel data;
    if (observer == nullptr || !data.WriteInterfaceToken(GetDescriptor()) ||
        !data.WriteRemoteObject(observer->AsObject())) {
        return ERR_INVALID_VALUE;
    }
    return CallForResult(UNREGISTER_APPLICATION_STATE_OBSERVER, data);
}

// The transport's error, or else the manager's int32 result.
int32_t AppMgrProxy::CallForResult(uint32_t code, MessageParcel& data)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return ERR_DEAD_OBJECT;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    int status = remote->SendRequest(code, data, reply, option);
    if (status != ERR_NONE) {
        return status;
    }
    int32_t result = 0;
    return reply.ReadInt32(result) ? result : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::AppExecFwk
