#ifndef ZEL_DEVICE_SCENARIO_PLAYER_H
#define ZEL_DEVICE_SCENARIO_PLAYER_H

// Plays a parsed scenario against a device.
//
// Contract:
//  - Unless options.realtime, virtual time is already installed (VirtualClock::Install() before
//    the device was made); the player is the one thread that moves it.
//  - For each distinct time T of the file, in order: move the clock to T (everything due up to T
//    runs, in due order, and the device becomes quiet), then run the lines stamped T in file order,
//    waiting for quiet after each. The run stops at `end`, else moves on to scenario.endTime.
//  - After every step the new trace events go to the sinks, in trace order. The run stops with
//    DEVICE_FAILED when DeviceControl::Failure() is no longer empty or the device did not become
//    quiet within options.quietLimit of real time (a hang), and with REFUSED when the device
//    refused a command; either is reported on err as "FILE:LINE: ...".
//  - Every expect line emits an `expect` {line, ok} event (see ExpectChecker for what holds); a
//    failed one is reported on err with what was seen, the run goes on, and the outcome is then
//    EXPECT_FAILED unless something worse happened.

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "command_executor.h"
#include "device_control.h"
#include "expect_checker.h"
#include "scenario.h"
#include "trace_sink.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {

enum class PlayOutcome { PLAYED, EXPECT_FAILED, REFUSED, DEVICE_FAILED };

struct PlayerOptions {
    bool realtime = false;
    std::chrono::milliseconds quietLimit = VirtualClock::kDefaultQuietLimit;
};

class ScenarioPlayer {
public:
    ScenarioPlayer(DeviceControl& device, std::ostream& err, PlayerOptions options = {});

    // The sink must outlive Play().
    void AddSink(TraceSink* sink) { sinks_.push_back(sink); }
    PlayOutcome Play(const Scenario& scenario);
    // The time the run got to: the end time when it played through.
    int64_t ReachedTime() const { return reached_; }

    // How many events of a failed check's report are shown.
    static constexpr size_t kShownEvents = 20;
    // How much of a failed line a report quotes.
    static constexpr size_t kShownLineChars = 160;

private:
    bool RunLine(const ScenarioLine& line, std::string* error);
    bool MoveTo(int64_t time, const std::string& where);
    bool Settle(const std::string& where);
    bool Checked(bool quiet, const std::string& where);
    bool CheckExpect(const std::string& where, const ScenarioLine& line, const Cmd::Expect& expect);
    void Publish();

    DeviceControl& device_;
    std::ostream& err_;
    PlayerOptions options_;
    CommandExecutor executor_;
    ExpectChecker checker_;
    std::vector<TraceSink*> sinks_;
    size_t published_ = 0;
    int64_t reached_ = 0;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SCENARIO_PLAYER_H
