#ifndef TARVO_DISPLAY_MANAGER_SCREEN_INFO_H
#define TARVO_DISPLAY_MANAGER_SCREEN_INFO_H

#include <cstdint>

#include "dm_common.h"
#include "parcel.h"

namespace Tarvo::Vantel {

// What the display manager service tells about one screen. On the wire: uint64 id, uint32 width,
// uint32 height, uint32 density (20 bytes).
struct ScreenInfo {
    ScreenId id = SCREEN_ID_INVALID;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t density = 0;

    bool Marshalling(Parcel& parcel) const;
    // False (read position unchanged) if the fields are not all there.
    static bool Unmarshalling(Parcel& parcel, ScreenInfo& info);

    bool operator==(const ScreenInfo&) const = default;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_SCREEN_INFO_H
