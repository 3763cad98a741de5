#include "scenario_player.h"

#include <thread>

#include "input_text.h"
#include "platform_clock.h"
#include "sequencer.h"

namespace Tarvo::Emu {

ScenarioPlayer::ScenarioPlayer(DeviceControl& device, std::ostream& err, PlayerOptions options)
    : device_(device), err_(err), options_(options), executor_(device)
{
}

PlayOutcome ScenarioPlayer::Play(const Scenario& scenario)
{
    if (!options_.realtime && !PlatformClock::IsVirtual()) {
        err_ << scenario.file << ": virtual time is not installed\n";
        return PlayOutcome::DEVICE_FAILED;
    }
    bool expectFailed = false;
    bool first = true;
    int64_t at = 0;
    for (const ScenarioLine& line : scenario.lines) {
        const std::string where = scenario.file + ":" + std::to_string(line.line) + ": ";
        if (first || line.time != at) {
            first = false;
            at = line.time;
            if (!MoveTo(at, where)) {
                return PlayOutcome::DEVICE_FAILED;
            }
        }
        if (std::holds_alternative<Cmd::End>(line.command)) {
            return expectFailed ? PlayOutcome::EXPECT_FAILED : PlayOutcome::PLAYED;
        }
        if (const auto* expect = std::get_if<Cmd::Expect>(&line.command)) {
            expectFailed = !CheckExpect(where, line, *expect) || expectFailed;
        } else if (std::string error; !RunLine(line, &error)) {
            if (!Checked(true, where)) {
                return PlayOutcome::DEVICE_FAILED;
            }
            err_ << where << error << '\n';
            return PlayOutcome::REFUSED;
        }
        if (!Settle(where)) {
            return PlayOutcome::DEVICE_FAILED;
        }
    }
    if (!MoveTo(scenario.endTime,
                scenario.file + ": running to the end at " + std::to_string(scenario.endTime) + " ms: ")) {
        return PlayOutcome::DEVICE_FAILED;
    }
    return expectFailed ? PlayOutcome::EXPECT_FAILED : PlayOutcome::PLAYED;
}

bool ScenarioPlayer::RunLine(const ScenarioLine& line, std::string* error)
{
    // Whatever the line sets going waits until the line is done, so it always starts from the same point.
    Sequencer::Hold hold;
    return executor_.Run(line.line, line.command, error);
}

bool ScenarioPlayer::MoveTo(int64_t time, const std::string& where)
{
    const PlatformClock::time_point until{std::chrono::milliseconds(time)};
    bool quiet = false;
    if (options_.realtime) {
        const auto ahead = until - PlatformClock::now();
        if (ahead > PlatformClock::duration::zero()) {
            std::this_thread::sleep_for(ahead);
        }
        quiet = device_.WaitQuiet(options_.quietLimit);
    } else {
        quiet = VirtualClock::AdvanceTo(until, options_.quietLimit);
    }
    if (quiet) {
        reached_ = time;
    }
    return Checked(quiet, where);
}

bool ScenarioPlayer::Settle(const std::string& where)
{
    return Checked(device_.WaitQuiet(options_.quietLimit), where);
}

bool ScenarioPlayer::Checked(bool quiet, const std::string& where)
{
    Publish();
    // A crash often shows as a hang too; the crash is the news.
    if (const std::string failure = device_.Failure(); !failure.empty()) {
        err_ << where << "the device failed: " << failure << '\n';
        return false;
    }
    if (!quiet) {
        err_ << where << "the device made no progress for " << options_.quietLimit.count()
             << " ms of real time without becoming quiet (a hang)\n";
        return false;
    }
    return true;
}

bool ScenarioPlayer::CheckExpect(const std::string& where, const ScenarioLine& line, const Cmd::Expect& expect)
{
    const ExpectChecker::Result result = checker_.Check(expect, device_.GetTrace());
    device_.GetTrace().Emit("expect", {{"line", int64_t{line.line}}, {"ok", result.ok}});
    if (result.ok) {
        return true;
    }
    err_ << where << "failed: " << Shown(line.text, kShownLineChars) << '\n';
    if (result.seen.empty()) {
        err_ << "    no " << expect.ev << " event since the last expect that held\n";
    } else {
        err_ << "    " << (expect.none ? "matching" : expect.ev) << " events since the last expect that held:\n";
    }
    for (size_t i = 0; i < result.seen.size() && i < kShownEvents; ++i) {
        err_ << "    " << result.seen[i]->Json() << '\n';
    }
    if (result.seen.size() > kShownEvents) {
        err_ << "    ... and " << result.seen.size() - kShownEvents << " more\n";
    }
    return false;
}

void ScenarioPlayer::Publish()
{
    const std::vector<TraceEvent> events = device_.GetTrace().EventsSince(published_);
    published_ += events.size();
    for (TraceSink* sink : sinks_) {
        for (const auto& event : events) {
            sink->Write(event);
        }
        sink->Flush();
    }
}

}  // namespace Tarvo::Emu
