#ifndef TARVO_DISPLAY_MANAGER_SCREEN_MANAGER_H
#define TARVO_DISPLAY_MANAGER_SCREEN_MANAGER_H

#include <vector>

#include "dm_common.h"
#include "refbase.h"
#include "screen.h"

namespace Tarvo::Vantel {

// The screen client of a process; each call is a request to the display manager service. Thread-safe.
class ScreenManager {
public:
    static ScreenManager& GetInstance();

    ScreenManager(const ScreenManager&) = delete;
    ScreenManager& operator=(const ScreenManager&) = delete;

    // Null when there is no such screen or the service cannot be reached.
    sptr<Screen> GetScreenById(ScreenId screenId);
    // In id order; empty when the service cannot be reached.
    std::vector<sptr<Screen>> GetAllScreens();

private:
    ScreenManager() = default;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_SCREEN_MANAGER_H
