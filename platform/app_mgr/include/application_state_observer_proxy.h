#ifndef TARVO_APP_MGR_APPLICATION_STATE_OBSERVER_PROXY_H
#define TARVO_APP_MGR_APPLICATION_STATE_OBSERVER_PROXY_H

// The application manager's handle on an observer of another process. Calls are one-way and
// fire-and-forget: a dead or failing observer is the manager's death recipient's business.

#include "iapplication_state_observer.h"
#include "iremote_proxy.h"

namespace Tarvo::AppExecFwk {

class ApplicationStateObserverProxy : public IRemoteProxy<IApplicationStateObserver> {
public:
    explicit ApplicationStateObserverProxy(const sptr<IRemoteObject>& impl);
    ~ApplicationStateObserverProxy() override = default;

    void OnForegroundApplicationChanged(const AppStateData& appStateData) override;
    void OnProcessCreated(const AppStateData& processData) override;
    void OnProcessDied(const AppStateData& processData) override;

private:
    void SendOneWay(uint32_t code, const AppStateData& data);
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_APPLICATION_STATE_OBSERVER_PROXY_H
