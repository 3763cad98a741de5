#ifndef TARVO_APP_MGR_APP_MGR_INTERFACE_H
#define TARVO_APP_MGR_APP_MGR_INTERFACE_H

// The application manager, system ability APP_MGR_SERVICE_ID: keeps the state observers and calls
// them (one-way) as applications change state.
//
// Wire format (after the interface token), both synchronous:
//   REGISTER_APPLICATION_STATE_OBSERVER:   data object observer, string vector bundleNameList;
//                                          reply int32 result
//   UNREGISTER_APPLICATION_STATE_OBSERVER: data object observer; reply int32 result
// A request that cannot be decoded is answered ERR_INVALID_VALUE with no reply.

#include <cstdint>
#include <string>
#include <vector>

#include "iapplication_state_observer.h"
#include "iremote_broker.h"

namespace Tarvo::AppExecFwk {

constexpr int32_t APP_MGR_SERVICE_ID = 501;

class IAppMgr : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.appexecfwk.AppMgr");

    enum Message : uint32_t {
        REGISTER_APPLICATION_STATE_OBSERVER = 1,
        UNREGISTER_APPLICATION_STATE_OBSERVER = 2,
    };

    // 0 on success. A non-empty bundleNameList limits the calls to those applications.
    virtual int32_t RegisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer,
                                                     const std::vector<std::string>& bundleNameList = {}) = 0;
    // 0 on success; non-zero for an observer that is not registered.
    virtual int32_t UnregisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer) = 0;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_APP_MGR_INTERFACE_H
