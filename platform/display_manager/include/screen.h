#ifndef TARVO_DISPLAY_MANAGER_SCREEN_H
#define TARVO_DISPLAY_MANAGER_SCREEN_H

#include <cstdint>

#include "dm_common.h"
#include "refbase.h"
#include "screen_info.h"

namespace Tarvo::Vantel {

// One screen as the display manager service described it when the screen was obtained: the
// getters return that snapshot (obtain the screen again for fresh values). SetResolution asks the
// service to change the screen.
class Screen : public RefBase {
public:
    explicit Screen(const ScreenInfo& info);

    ScreenId GetId() const { return info_.id; }
    uint32_t GetWidth() const { return info_.width; }
    uint32_t GetHeight() const { return info_.height; }
    uint32_t GetDensity() const { return info_.density; }

    // The service's answer; DM_ERROR_NULLPTR when it cannot be obtained, DM_ERROR_IPC_FAILED when
    // the request does not make it.
    DMError SetResolution(uint32_t width, uint32_t height, uint32_t dpi) const;

private:
    const ScreenInfo info_;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_SCREEN_H
