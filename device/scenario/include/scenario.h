#ifndef ZEL_DEVICE_SCENARIO_H
#define ZEL_DEVICE_SCENARIO_H

// A parsed scenario: its lines in file order (times never decrease) and the time the run ends.

#include <cstdint>
#include <string>
#include <vector>

#include "scenario_command.h"

namespace Tarvo::Emu {

struct ScenarioLine {
    int line = 0;      // 1-based line number in the file
    int64_t time = 0;  // virtual ms since power-on
    std::string text;  // the line as written, for messages
    ScenarioCommand command;
};

struct Scenario {
    std::string file;  // as named in messages
    std::vector<ScenarioLine> lines;
    // The time of the `end` line, else 10000 ms after the last line (after power-on if none).
    int64_t endTime = 0;

    static constexpr int64_t kDefaultTail = 10000;
    // The longest run: one day of virtual time. Every time, and the end, lies within it.
    static constexpr int64_t kMaxTime = 86'400'000;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SCENARIO_H
