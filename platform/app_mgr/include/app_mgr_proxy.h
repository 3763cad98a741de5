#ifndef TARVO_APP_MGR_APP_MGR_PROXY_H
#define TARVO_APP_MGR_APP_MGR_PROXY_H

// Client side of IAppMgr (iface_cast of the manager's object gives one). A null observer is
// ERR_INVALID_VALUE without a request; a transport failure returns the transport's code.

#include "app_mgr_interface.h"
#include "iremote_proxy.h"

namespace Tarvo::AppExecFwk {

class AppMgrProxy : public IRemoteProxy<IAppMgr> {
public:
    explicit AppMgrProxy(const sptr<IRemoteObject>& impl);
    ~AppMgrProxy() override = default;

    int32_t RegisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer,
                                             const std::vector<std::string>& bundleNameList = {}) override;
    int32_t UnregisterApplicationStateObserver(const sptr<IApplicationStateObserver>& observer) override;

private:
    int32_t CallForResult(uint32_t code, MessageParcel& data);
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_APP_MGR_PROXY_H
