#include "application_state_observer_proxy.h"

#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::AppExecFwk {
namespace {
const BrokerDelegator<ApplicationStateObserverProxy> delegator;
}

ApplicationStateObserverProxy::ApplicationStateObserverProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<IApplicationStateObserver>(impl)
{
}

void ApplicationStateObserverProxy::OnForegroundApplicationChanged(const AppStateData& appStateData)
{
    SendOneWay(TRANSACT_ON_FOREGROUND_APPLICATION_CHANGED, appStateData);
}

void ApplicationStateObserverProxy::OnProcessCreated(const AppStateData& processData)
{
    SendOneWay(TRANSACT_ON_PROCESS_CREATED, processData);
}

void ApplicationStateObserverProxy::OnProcessDied(const AppStateData& processData)
{
    SendOneWay(TRANSACT_ON_PROCESS_DIED, processData);
}

void ApplicationStateObserverProxy::SendOneWay(uint32_t code, const AppStateData& state)
{
    sptr<IRemoteObject> remote = Remote();
    MessageParcel data;
    if (remote == nullptr || !data.WriteInterfaceToken(GetDescriptor()) || !data.WriteParcelable(&state)) {
        return;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC);
    remote->SendRequest(code, data, reply, option);
}

}  // namespace Tarvo::AppExecFwk
