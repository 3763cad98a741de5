#ifndef TARVO_APP_MGR_IAPPLICATION_STATE_OBSERVER_H
#define TARVO_APP_MGR_IAPPLICATION_STATE_OBSERVER_H

// The callback the application manager calls when applications change state.
//
// Wire format: every operation is one-way; data = interface token, then the AppStateData as a
// parcelable (int32 1, then its fields). No reply.

#include <cstdint>

#include "app_state_data.h"
#include "iremote_broker.h"

namespace Tarvo::AppExecFwk {

class IApplicationStateObserver : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.appexecfwk.IApplicationStateObserver");

    enum Message : uint32_t {
        TRANSACT_ON_FOREGROUND_APPLICATION_CHANGED = 0,
        TRANSACT_ON_PROCESS_CREATED = 1,
        TRANSACT_ON_PROCESS_DIED = 2,
    };

    virtual void OnForegroundApplicationChanged(const AppStateData& appStateData) = 0;
    virtual void OnProcessCreated(const AppStateData& processData) = 0;
    virtual void OnProcessDied(const AppStateData& processData) = 0;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_IAPPLICATION_STATE_OBSERVER_H
