#include "application_state_observer_stub.h"

#include <memory>

#include "ipc_types.h"

namespace Tarvo::AppExecFwk {

ApplicationStateObserverStub::ApplicationStateObserverStub() : IRemoteStub<IApplicationStateObserver>(false) {}

int ApplicationStateObserverStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                                  MessageOption& option)
{
    if (code != TRANSACT_ON_FOREGROUND_APPLICATION_CHANGED && code != TRANSACT_ON_PROCESS_CREATED &&
        code != TRANSACT_ON_PROCESS_DIED) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    std::unique_ptr<AppStateData> state(data.ReadParcelable<AppStateData>());
    if (state == nullptr) {
        return ERR_INVALID_VALUE;
    }
    switch (code) {
        case TRANSACT_ON_FOREGROUND_APPLICATION_CHANGED:
            OnForegroundApplicationChanged(*state);
            break;
        case TRANSACT_ON_PROCESS_CREATED:
            OnProcessCreated(*state);
            break;
        default:
            OnProcessDied(*state);
            break;
    }
    return ERR_NONE;
}

void ApplicationStateObserverStub::OnForegroundApplicationChanged(const AppStateData&) {}

void ApplicationStateObserverStub::OnProcessCreated(const AppStateData&) {}

void ApplicationStateObserverStub::OnProcessDied(const AppStateData&) {}

}  // namespace Tarvo::AppExecFwk
