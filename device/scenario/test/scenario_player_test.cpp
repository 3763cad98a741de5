#include "scenario_player.h"

#include <gtest/gtest.h>

#include <sstream>

#include "event_handler.h"
#include "event_runner.h"
#include "fake_device.h"
#include "jsonl_writer.h"
#include "scenario_parser.h"
#include "work_tracker.h"

namespace Tarvo::Emu {
namespace {

class ScenarioPlayerTest : public testing::Test {
protected:
    void SetUp() override { VirtualClock::Install(); }

    PlayOutcome Play(const std::string& text, PlayerOptions options = {})
    {
        ParseResult parsed = ScenarioParser::Parse(text, "p.scn", ".");
        EXPECT_TRUE(parsed.Ok()) << testing::PrintToString(parsed.errors);
        ScenarioPlayer player(device_, err_, options);
        JsonlWriter jsonl(trace_);
        player.AddSink(&jsonl);
        const PlayOutcome outcome = player.Play(parsed.scenario);
        reached_ = player.ReachedTime();
        return outcome;
    }

    FakeDevice device_;
    std::ostringstream err_;
    std::ostringstream trace_;
    int64_t reached_ = -1;
};

TEST_F(ScenarioPlayerTest, LinesRunAtTheirTimesInFileOrderAndTheRunEndsTenSecondsAfterTheLast)
{
    EXPECT_EQ(Play("0 pkg.install com.g game\n"
                   "0 boot\n"
                   "1500 scene com.a S 1\n"
                   "1500 thermal 1=90 as=com.g\n"
                   "+500 sa.down 3308\n"
                   "2000 settings.up\n"
                   "2000 raw 7 u:1 oneway token=none as=shell\n"),
              PlayOutcome::PLAYED);
    std::vector<std::string> timed;
    for (const auto& call : device_.calls) {
        timed.push_back(std::to_string(call.t) + " " + call.text);
    }
    EXPECT_EQ(timed, (std::vector<std::string>{"0 install com.g uid=0 game=1 system=0 type=-1", "0 boot",
                                               "1500 scene 3 system com.a S 1", "1500 thermal 4 bundle:com.g 1=90",
                                               "2000 sa 3308 down", "2000 settings up",
                                               "2000 raw 7 shell 7 oneway notoken fields=1"}));
    EXPECT_EQ(reached_, 12000);
    EXPECT_EQ(PlatformClock::now().time_since_epoch().count(), 12000);
    EXPECT_EQ(err_.str(), "");
}

TEST_F(ScenarioPlayerTest, TasksDueByATimeRunBeforeItsLinesAndEndStopsTheRun)
{
    auto runner = AppExecFwk::EventRunner::Create("player_test");
    auto handler = std::make_shared<AppExecFwk::EventHandler>(runner);
    handler->PostTask([this] { device_.trace.Emit("param.set", {{"key", std::string("due")}}); }, "", 1000);
    device_.onCall = [](FakeDevice& device, const std::string& call) {
        device.trace.Emit("param.set", {{"key", call}});
    };

    EXPECT_EQ(Play("1000 powermode 1\n1000 end\n"), PlayOutcome::PLAYED);
    EXPECT_EQ(trace_.str(),
              "{\"t\":1000,\"ev\":\"param.set\",\"key\":\"due\"}\n"
              "{\"t\":1000,\"ev\":\"param.set\",\"key\":\"powermode 1\"}\n");
    EXPECT_EQ(reached_, 1000);
    EXPECT_EQ(PlatformClock::now().time_since_epoch().count(), 1000);
}

TEST_F(ScenarioPlayerTest, ExpectsAreTracedAndAFailureIsReportedWhileTheRunGoesOn)
{
    device_.onCall = [](FakeDevice& device, const std::string& call) {
        if (call.rfind("light", 0) == 0) {
            device.trace.Emit("mox.light", {{"status", call.find(" up") != std::string::npos}});
        }
    };
    EXPECT_EQ(Play("100 light 1 on\n"
                   "100 expect mox.light status=true\n"
                   "200 light 1 off\n"
                   "200 expect mox.light status=true   # already matched above\n"
                   "300 expect.none mox.light status=false\n"
                   "400 powermode 3\n"),
              PlayOutcome::EXPECT_FAILED);
    EXPECT_EQ(trace_.str(),
              "{\"t\":100,\"ev\":\"mox.light\",\"status\":true}\n"
              "{\"t\":100,\"ev\":\"expect\",\"line\":2,\"ok\":true}\n"
              "{\"t\":200,\"ev\":\"mox.light\",\"status\":false}\n"
              "{\"t\":200,\"ev\":\"expect\",\"line\":4,\"ok\":false}\n"
              "{\"t\":300,\"ev\":\"expect\",\"line\":5,\"ok\":false}\n");
    EXPECT_EQ(err_.str(),
              "p.scn:4: failed: 200 expect mox.light status=true   # already matched above\n"
              "    mox.light events since the last expect that held:\n"
              "    {\"t\":200,\"ev\":\"mox.light\",\"status\":false}\n"
              "p.scn:5: failed: 300 expect.none mox.light status=false\n"
              "    matching events since the last expect that held:\n"
              "    {\"t\":200,\"ev\":\"mox.light\",\"status\":false}\n");
    EXPECT_EQ(device_.calls.back().text, "powermode 3");
}

TEST_F(ScenarioPlayerTest, RefusalsFailuresAndHangsStopTheRun)
{
    device_.refuse["remove"] = "no such package";
    EXPECT_EQ(Play("0 pkg.install com.x\n5 pkg.remove com.x\n9 powermode 1\n"), PlayOutcome::REFUSED);
    EXPECT_EQ(err_.str(), "p.scn:2: no such package\n");
    EXPECT_EQ(device_.calls.size(), 2u);

    err_.str("");
    device_.onCall = [](FakeDevice& device, const std::string&) { device.failure = "service crashed (SIGSEGV)"; };
    EXPECT_EQ(Play("10 powermode 1\n11 powermode 2\n"), PlayOutcome::DEVICE_FAILED);
    EXPECT_EQ(err_.str(), "p.scn:1: the device failed: service crashed (SIGSEGV)\n");

    err_.str("");
    device_.failure.clear();
    std::optional<WorkTracker::Token> stuck;
    device_.onCall = [&stuck](FakeDevice&, const std::string&) { stuck.emplace(); };
    EXPECT_EQ(Play("20 powermode 1\n", PlayerOptions{false, std::chrono::milliseconds(20)}),
              PlayOutcome::DEVICE_FAILED);
    EXPECT_EQ(err_.str(),
              "p.scn:1: the device made no progress for 20 ms of real time without becoming quiet (a hang)\n");
    stuck.reset();
}

}  // namespace
}  // namespace Tarvo::Emu
