#ifndef ZEL_MANAGER_ZEL_MANAGER_STUB_H
#define ZEL_MANAGER_ZEL_MANAGER_STUB_H

#include "i_zel_manager.h"
#include "iremote_stub.h"

namespace Tarvo::Vantel {

// Server side of IZelManager: checks the token and the caller, decodes, dispatches.
// Returns 0 handled, 3 refused (wrong token or caller), -1 parcel fault; unknown codes go to
// the platform's default handler.
class ZelManagerStub : public Tarvo::IRemoteStub<IZelManager> {
public:
    static constexpr int ERR_REFUSED = 3;
    static constexpr int ERR_PARCEL = -1;

    ZelManagerStub();
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

    // A system application, a native process or the shell.
    bool CheckCallerIsSystemApp();

private:
    int32_t SetSceneStub(MessageParcel& data, MessageParcel& reply);
    int32_t ChangeResolutionModeStub(MessageParcel& data, MessageParcel& reply);
    int32_t SetThermalPolicyStub(MessageParcel& data, MessageParcel& reply);
    int32_t RegisterGameFpsListenerStub(MessageParcel& data, MessageParcel& reply);
    int32_t SetGameFpsForThermalControlStub(MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_MANAGER_STUB_H
