#ifndef TARVO_EVENTHANDLER_PLATFORM_CLOCK_H
#define TARVO_EVENTHANDLER_PLATFORM_CLOCK_H

// The one clock of the platform: every runner, delay, retry and time-out reads it.
//
// Contract:
//  - Real mode (the default): milliseconds of the steady clock since the clock was first read.
//  - Virtual mode (after VirtualClock::Install()): the virtual time, 0 at power-on, moved only by
//    VirtualClock. It never goes back. After VirtualClock::InstallShared() it is the value every
//    process of the device reads.
//  - now() is lock-free and may be called from any thread, also while holding locks.

#include <atomic>
#include <chrono>
#include <cstdint>

namespace Tarvo {

class PlatformClock {
public:
    using duration = std::chrono::milliseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<PlatformClock>;
    static constexpr bool is_steady = true;

    static time_point now() noexcept;
    static bool IsVirtual() noexcept;
    // Real mode: the steady-clock instant at which now() reaches `when`, to wait for it to the
    // microsecond rather than a whole millisecond past it.
    static std::chrono::steady_clock::time_point RealTimeOf(time_point when) noexcept;

private:
    friend class VirtualClock;
    static void EnableVirtualTime() noexcept;
    // Virtual time is read from (and moved in) `value` from now on.
    static void UseSharedValue(std::atomic<int64_t>* value) noexcept;
    // Ignores a time earlier than the current one.
    static void SetVirtualNow(time_point when) noexcept;
};

}  // namespace Tarvo

#endif  // TARVO_EVENTHANDLER_PLATFORM_CLOCK_H
