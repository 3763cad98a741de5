#ifndef ZEL_MANAGER_I_ZEL_CALLBACK_INTERFACE_H
#define ZEL_MANAGER_I_ZEL_CALLBACK_INTERFACE_H

#include <cstdint>

#include "iremote_broker.h"

namespace Tarvo::Vantel {

// The callback through which the service tells a registered game its target frame rate.
// Code 0, one-way: interface token, then targetFps as uint32.
class IZelCallbackInterface : public Tarvo::IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"Tarvo.Vantel.IZelCallbackInterface");

    enum : uint32_t { ON_GAME_FPS_CHANGE = 0 };

    virtual int32_t OnGameFpsChange(uint32_t targetFps) = 0;
};

}  // namespace Tarvo::Vantel

#endif  // ZEL_MANAGER_I_ZEL_CALLBACK_INTERFACE_H
