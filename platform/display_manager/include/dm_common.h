#ifndef TARVO_DISPLAY_MANAGER_DM_COMMON_H
#define TARVO_DISPLAY_MANAGER_DM_COMMON_H

#include <cstdint>

namespace Tarvo::Vantel {

using DisplayId = uint64_t;
using ScreenId = uint64_t;
constexpr DisplayId DISPLAY_ID_INVALID = UINT64_MAX;
constexpr ScreenId SCREEN_ID_INVALID = UINT64_MAX;

// Results of display and screen operations; the values travel on the wire.
enum class DMError : int32_t {
    DM_OK = 0,
    DM_ERROR_INVALID_PARAM = 1,   // a zero width, height or density
    DM_ERROR_NULLPTR = 2,         // the display manager service could not be obtained
    DM_ERROR_IPC_FAILED = 3,      // the request or its reply did not make it
    DM_ERROR_INVALID_SCREEN = 4,  // no screen has that id
    DM_ERROR_UNKNOWN = -1,
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_DM_COMMON_H
