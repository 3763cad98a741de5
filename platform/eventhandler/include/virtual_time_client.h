#ifndef TARVO_EVENTHANDLER_VIRTUAL_TIME_CLIENT_H
#define TARVO_EVENTHANDLER_VIRTUAL_TIME_CLIENT_H

// What VirtualClock needs from something that holds timed work (an event runner's queue), so the
// clock knows nothing about tasks.

#include <optional>

#include "platform_clock.h"

namespace Tarvo {

class VirtualTimeClient {
public:
    virtual ~VirtualTimeClient() = default;

    // The earliest due time of the pending work, also when it is already due; nullopt when none.
    virtual std::optional<PlatformClock::time_point> NextDue() = 0;

    // Virtual time has moved. Called on the thread driving the clock. Before returning, the client
    // must count in WorkTracker every piece of work that is now due, so that a quiet-wait that
    // follows cannot miss it; it must not run the work here.
    virtual void OnTimeAdvanced() = 0;
};

}  // namespace Tarvo

#endif  // TARVO_EVENTHANDLER_VIRTUAL_TIME_CLIENT_H
