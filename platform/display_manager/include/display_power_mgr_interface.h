#ifndef TARVO_DISPLAY_MANAGER_DISPLAY_POWER_MGR_INTERFACE_H
#define TARVO_DISPLAY_MANAGER_DISPLAY_POWER_MGR_INTERFACE_H

// The display power manager's brightness-listener wire format. Clients write the registration by
// hand and implement the callback by hand, so only the names and codes live here.
//
// Registration, to the display power manager (system ability DISPLAY_POWER_MANAGER_ID), synchronous:
//   code REGISTER_BRIGHTNESS_CALLBACK
//   data   interface token DISPLAY_POWER_MGR_DESCRIPTOR, int32 vector of ambient-brightness
//          thresholds (count, then values), the callback as a remote object
//   reply  int32 result, 0 when the callback was taken
// A later registration replaces the callback and the thresholds.
//
// Callback, from the display power manager to the registered object, one-way:
//   code ON_BRIGHTNESS_CHANGE
//   data   interface token BRIGHTNESS_CALLBACK_DESCRIPTOR, uint32 light type, bool state

#include <cstdint>

namespace Tarvo::DisplayPowerMgr {

inline constexpr int32_t DISPLAY_POWER_MANAGER_ID = 3308;
inline constexpr char16_t DISPLAY_POWER_MGR_DESCRIPTOR[] = u"tarvo.displaypowermgr.IDisplayPowerMgr";
inline constexpr char16_t BRIGHTNESS_CALLBACK_DESCRIPTOR[] = u"tarvo.powermgr.IDisplayBrightnessCallback";

enum DisplayPowerMgrCode : uint32_t {
    REGISTER_BRIGHTNESS_CALLBACK = 21,
};

enum BrightnessCallbackCode : uint32_t {
    ON_BRIGHTNESS_CHANGE = 0,
};

}  // namespace Tarvo::DisplayPowerMgr

#endif  // TARVO_DISPLAY_MANAGER_DISPLAY_POWER_MGR_INTERFACE_H
