#ifndef TARVO_EVENTHANDLER_TEST_TASK_JOURNAL_H
#define TARVO_EVENTHANDLER_TEST_TASK_JOURNAL_H

// Records which task ran and at what platform time ("name@ms", relative to the journal's creation).

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "platform_clock.h"

namespace Tarvo {

class TaskJournal {
public:
    TaskJournal() : start_(PlatformClock::now()) {}

    void Note(const std::string& name)
    {
        const auto at = Elapsed();
        std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back(name + "@" + std::to_string(at));
    }

    std::vector<std::string> Entries() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return entries_;
    }

    PlatformClock::time_point Start() const { return start_; }
    // Milliseconds since the journal began; readable in failure messages, unlike a time_point.
    int64_t Elapsed(PlatformClock::time_point when) const { return (when - start_).count(); }
    int64_t Elapsed() const { return Elapsed(PlatformClock::now()); }

private:
    const PlatformClock::time_point start_;
    mutable std::mutex mutex_;
    std::vector<std::string> entries_;
};

}  // namespace Tarvo

#endif  // TARVO_EVENTHANDLER_TEST_TASK_JOURNAL_H
