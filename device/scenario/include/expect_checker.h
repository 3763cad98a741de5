#ifndef ZEL_DEVICE_EXPECT_CHECKER_H
#define ZEL_DEVICE_EXPECT_CHECKER_H

// Checks `expect` and `expect.none` lines against the trace.
//
// Matching: an event matches when its kind is EV and every FIELD=VALUE holds, comparing the
// field's value written as text (ValueText: status=true, max=90, desc=BACK_APP_ANIMATION); an
// array field holds when one element equals VALUE; a string (such as a log line's msg) holds only
// when it equals VALUE as a whole. A field the event lacks never holds.
//
// Window rule: each check looks at the events traced from its window start up to now. The window
// starts at power-on (the first event); when an `expect` holds, the next window starts just after
// the event it matched, which is the first matching event of its window. A failed `expect` and
// every `expect.none` leave the window where it is. So consecutive expects check one step's events
// in the order they happened, and an expect.none checks everything since the last expect that held.
//
// Cost: events are indexed by kind as they come, once; an expect reads only the events of its kind
// in its window, and an expect.none that was already checked in the same window (the same kind and
// fields) reads only the events of its kind traced since. No event is copied. One checker follows
// one trace.

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "scenario_command.h"
#include "trace.h"

namespace Tarvo::Emu {

class ExpectChecker {
public:
    struct Result {
        bool ok = false;
        // What a failure reports: for expect, the events of kind EV in the window; for
        // expect.none, the events that matched. They point into the trace.
        std::vector<const TraceEvent*> seen;
    };

    Result Check(const Cmd::Expect& expect, const Trace& trace);
    // Index in the trace of the first event of the current window.
    size_t WindowStart() const { return windowStart_; }
    // Events looked at so far (indexing included): the work the checks cost.
    size_t EventsRead() const { return eventsRead_; }

    static bool Matches(const TraceEvent& event, const std::string& ev,
                        const std::vector<std::pair<std::string, std::string>>& fields);

private:
    // What an expect.none has read of its kind's events in the current window.
    struct NoneProgress {
        size_t next = 0;  // position in the kind's index
        std::vector<size_t> matches;
    };

    void Index(const Trace& trace);
    Result CheckExpect(const Cmd::Expect& expect, const Trace& trace, const std::vector<size_t>& positions);
    Result CheckNone(const Cmd::Expect& expect, const Trace& trace, const std::vector<size_t>& positions);

    size_t windowStart_ = 0;
    size_t indexed_ = 0;
    size_t eventsRead_ = 0;
    std::unordered_map<std::string, std::vector<size_t>> byKind_;  // trace positions, ascending
    std::map<std::string, NoneProgress> none_;                     // by kind and fields; reset as the window moves
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_EXPECT_CHECKER_H
