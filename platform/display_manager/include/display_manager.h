#ifndef TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_H
#define TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_H

#include "dm_common.h"

namespace Tarvo::Vantel {

// The display client of a process; each call is a request to the display manager service. Thread-safe.
class DisplayManager {
public:
    static DisplayManager& GetInstance();

    DisplayManager(const DisplayManager&) = delete;
    DisplayManager& operator=(const DisplayManager&) = delete;

    // DISPLAY_ID_INVALID when the service cannot be reached.
    DisplayId GetDefaultDisplayId();

private:
    DisplayManager() = default;
};

}  // namespace Tarvo::Vantel

#endif  // TARVO_DISPLAY_MANAGER_DISPLAY_MANAGER_H
