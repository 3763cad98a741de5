#include "app_mgr_stub.h"

#include "ipc_types.h"

namespace Tarvo::AppExecFwk {

AppMgrStub::AppMgrStub() : IRemoteStub<IAppMgr>(false) {}

int AppMgrStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (code != REGISTER_APPLICATION_STATE_OBSERVER && code != UNREGISTER_APPLICATION_STATE_OBSERVER) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    return code == REGISTER_APPLICATION_STATE_OBSERVER ? HandleRegister(data, reply) : HandleUnregister(data, reply);
}

int AppMgrStub::HandleRegister(MessageParcel& data, MessageParcel& reply)
{
    sptr<IApplicationStateObserver> observer = iface_cast<IApplicationStateObserver>(data.ReadRemoteObject());
    std::vector<std::string> bundleNameList;
    if (observer == nullptr || !data.ReadStringVector(&bundleNameList)) {
        return ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(RegisterApplicationStateObserver(observer, bundleNameList)) ? ERR_NONE : ERR_INVALID_VALUE;
}

int AppMgrStub::HandleUnregister(MessageParcel& data, MessageParcel& reply)
{
    sptr<IApplicationStateObserver> observer = iface_cast<IApplicationStateObserver>(data.ReadRemoteObject());
    if (observer == nullptr) {
        return ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(UnregisterApplicationStateObserver(observer)) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::AppExecFwk
