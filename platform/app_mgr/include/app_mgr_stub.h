#ifndef TARVO_APP_MGR_APP_MGR_STUB_H
#define TARVO_APP_MGR_APP_MGR_STUB_H

// Server side of IAppMgr: checks the token, decodes, dispatches to the operations a manager
// implements. Returns ERR_INVALID_VALUE (no reply) for a wrong token or undecodable data; the
// operation's result goes in the reply. Other codes get the platform's default answer.

#include "app_mgr_interface.h"
#include "iremote_stub.h"

namespace Tarvo::AppExecFwk {

class AppMgrStub : public IRemoteStub<IAppMgr> {
public:
    AppMgrStub();
    ~AppMgrStub() override = default;

    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    int HandleRegister(MessageParcel& data, MessageParcel& reply);
    int HandleUnregister(MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_APP_MGR_APP_MGR_STUB_H
