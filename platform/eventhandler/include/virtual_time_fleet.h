#ifndef TARVO_EVENTHANDLER_VIRTUAL_TIME_FLEET_H
#define TARVO_EVENTHANDLER_VIRTUAL_TIME_FLEET_H

// The processes whose time one driver moves. By default the driver's own process alone; a device
// made of real processes supplies one that reaches each of them.

#include <optional>

#include "platform_clock.h"

namespace Tarvo {

class VirtualTimeFleet {
public:
    virtual ~VirtualTimeFleet() = default;

    // The earliest due time of pending work in any of the processes; nullopt when none has any.
    virtual std::optional<PlatformClock::time_point> NextDue() = 0;

    // The clock reads `when` already and the driver holds the baton. Each process in turn, in an
    // order that is the same on every run, reserves the turns of its tasks now due and counts them
    // (VirtualClock::MoveHere); returns once every one has. False if a process could not be moved:
    // the advance fails.
    virtual bool MoveTo(PlatformClock::time_point when) = 0;
};

}  // namespace Tarvo

#endif  // TARVO_EVENTHANDLER_VIRTUAL_TIME_FLEET_H
