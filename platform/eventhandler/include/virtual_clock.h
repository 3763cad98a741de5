#ifndef TARVO_EVENTHANDLER_VIRTUAL_CLOCK_H
#define TARVO_EVENTHANDLER_VIRTUAL_CLOCK_H

// Drives virtual time for tests and scenarios: time moves only when told, and moving it runs every
// task that falls due, in due-time order, each on its runner's own thread.
//
// Contract:
//  - Install() before any runner exists; it cannot be undone. Virtual time starts at 0. It also
//    turns the Sequencer on: from then on the device's threads run one at a time, in an order the
//    program fixes, so the same steps give the same results on every run.
//  - AdvanceTo(until): waits for the device to be quiet (WorkTracker), then repeatedly moves time
//    to the earliest due time <= until among all clients and waits for quiet again, so that work
//    posted meanwhile (also with delay 0) runs in order within the same advance; finally moves time
//    to until and waits for quiet once more. An until in the past is a no-op returning true.
//  - Returns false if, waiting for quiet at some step, nothing progressed for quietLimit of real
//    time (a hang, which the caller reports), or if virtual time is not installed.
//  - One thread drives the clock at a time, and never from inside a runner's task (it would wait
//    for itself).
//  - A device of several real processes: each calls InstallShared() instead of Install(), so the
//    clock, the line of turns and the work count are the device's (SharedTimePage). The driver
//    moves them all through a fleet (SetFleet) that reaches NextDueHere() and MoveHere() of each
//    process; without one it moves its own process alone.

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform_clock.h"
#include "virtual_time_client.h"
#include "virtual_time_fleet.h"

namespace Tarvo {

class VirtualClock {
public:
    static constexpr std::chrono::milliseconds kDefaultQuietLimit = std::chrono::seconds(10);

    static void Install();
    // Install() on the page at `path` (SharedTimePage::Make()); false with a reason if it is refused.
    static bool InstallShared(const std::string& path, std::string& reason);
    // Whom the driver moves; nullptr: this process alone.
    static void SetFleet(std::shared_ptr<VirtualTimeFleet> fleet);
    static bool AdvanceTo(PlatformClock::time_point until, std::chrono::milliseconds quietLimit = kDefaultQuietLimit);
    static bool AdvanceBy(PlatformClock::duration delta, std::chrono::milliseconds quietLimit = kDefaultQuietLimit);
    // Runs what is due now and whatever it causes; for after a request has been sent.
    static bool WaitQuiet(std::chrono::milliseconds quietLimit = kDefaultQuietLimit);
    // The earliest due time of the fleet's pending work.
    static std::optional<PlatformClock::time_point> NextDue();

    // This process's part of a move. The earliest due time among this process's clients:
    static std::optional<PlatformClock::time_point> NextDueHere();
    // The driver has moved the clock to `when` and holds the baton: this process's clients reserve
    // the turns of their due tasks and count them. Called on a thread that needs no turn.
    static void MoveHere(PlatformClock::time_point when);

    // Clients are held weakly: one that is gone simply drops out.
    static void AddClient(const std::weak_ptr<VirtualTimeClient>& client);

private:
    static bool MoveTo(PlatformClock::time_point when);
};

}  // namespace Tarvo

#endif  // TARVO_EVENTHANDLER_VIRTUAL_CLOCK_H
