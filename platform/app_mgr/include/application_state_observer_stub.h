#ifndef TARVO_APP_MGR_APPLICATION_STATE_OBSERVER_STUB_H
#define TARVO_APP_MGR_APPLICATION_STATE_OBSERVER_STUB_H

// Base of an observer object: decodes the manager's calls and dispatches them. Every operation
// does nothing unless overridden. A wrong token or undecodable data is answered with
// ERR_INVALID_VALUE and dispatches nothing; other codes get the platform's default answer.

#include "iapplication_state_observer.h"
#include "iremote_stub.h"

namespace Tarvo::AppExecFwk {

class ApplicationStateObserverStub : public IRemoteStub<IApplicationStateObserver> {
public:
    ApplicationStateObserverStub();
    ~ApplicationStateObserverStub() override = default;

    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

    void OnForegroundApplicationChanged(const AppStateData& appStateData) override;
    void OnProcessCreated(const AppStateData& processData) override;
    void OnProcessDied(const AppStateData& processData) override;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_APPLICATION_STATE_OBSERVER_STUB_H
