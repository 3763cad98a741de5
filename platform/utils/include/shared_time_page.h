#ifndef TARVO_UTILS_SHARED_TIME_PAGE_H
#define TARVO_UTILS_SHARED_TIME_PAGE_H

// Virtual time for a device made of several real processes: one file in the run folder, mapped
// by each of them, holds the clock value, the Sequencer's line and the WorkTracker's counts, so the
// line order, the quiet-wait and the time are those of the whole device.
//
// Contract:
//  - Make() creates the file (it must not exist yet) and lays an empty page in it; it does not
//    attach. The device makes it before it starts its processes.
//  - Attach() maps it and makes this process's Sequencer and WorkTracker use it (VirtualClock
//    attaches the clock too). Once, at start-up, before any sequenced work and any work count; it
//    cannot be undone. A file that is not a complete page of this build is refused with a reason.
//  - Without Attach() every process keeps its own private state, as before.
//  - The line holds kLineCapacity turns at once and the counts kMaxProcesses processes; running out
//    aborts the process with a message on stderr.

#include <atomic>
#include <cstdint>
#include <string>

namespace Tarvo {

class SharedTimePage {
public:
    static constexpr uint64_t kLineCapacity = 65536;
    static constexpr uint32_t kMaxProcesses = 256;

    static bool Make(const std::string& path, std::string& reason);
    static bool Attach(const std::string& path, std::string& reason);
    static bool Attached();
    // The shared clock in milliseconds; nullptr until attached.
    static std::atomic<int64_t>* Clock();
    // Bytes of a page file.
    static uint64_t Size();
};

}  // namespace Tarvo

#endif  // TARVO_UTILS_SHARED_TIME_PAGE_H
