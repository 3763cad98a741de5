#ifndef ZEL_MANAGER_ZEL_CALLBACK_STUB_H
#define ZEL_MANAGER_ZEL_CALLBACK_STUB_H

#include "i_zel_callback_interface.h"
#include "iremote_stub.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::Vantel {

// What a game derives from to be told its target frame rate; it overrides only OnGameFpsChange.
// Returns 0 handled, 3 wrong token, -1 parcel fault; other codes go to the platform's handler.
class ZelCallbackStub : public Tarvo::IRemoteStub<IZelCallbackInterface> {
public:
    static constexpr int ERR_REFUSED = 3;
    static constexpr int ERR_PARCEL = -1;

    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;
    int32_t OnGameFpsChange(uint32_t targetFps) override;

protected:
    int32_t OnGameFpsChangeStub(MessageParcel& data, MessageParcel& reply);
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_ZEL_CALLBACK_STUB_H
