#include "zel_device_app.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "fake_device.h"

namespace Tarvo::Emu {
namespace {

class ZelDeviceAppTest : public testing::Test {
protected:
    // Other test processes share the temporary folder; what a test names there goes with it.
    std::string Unique(const std::string& name)
    {
        written_.push_back(testing::TempDir() + "/zel_device_app_" + std::to_string(getpid()) + "_" + name);
        return written_.back();
    }

    std::string Write(const std::string& name, const std::string& text)
    {
        const std::string path = Unique(name);
        std::ofstream(path) << text;
        return path;
    }

    void TearDown() override
    {
        for (const std::string& path : written_) {
            std::remove(path.c_str());
        }
    }

    int Main(const std::vector<std::string>& args)
    {
        ZelDeviceApp app(
            [this](const DeviceOptions& options) {
                options_ = options;
                auto device = std::make_unique<FakeDevice>();
                device->onCall = onCall_;
                return device;
            },
            out_, err_);
        const int status = app.Main(args);
        abandoned_ = app.DeviceAbandoned();
        return status;
    }

    std::vector<std::string> written_;
    std::ostringstream out_;
    std::ostringstream err_;
    std::optional<DeviceOptions> options_;
    std::function<void(FakeDevice&, const std::string&)> onCall_;
    bool abandoned_ = false;
};

TEST_F(ZelDeviceAppTest, CheckAndBadScenariosPlayNothing)
{
    const std::string good = Write("good.scn", "0 boot\n+100 end\n");
    EXPECT_EQ(Main({"check", good}), 0);
    EXPECT_EQ(out_.str(), good + ": ok, 2 commands, ends at 100 ms\n");

    const std::string bad = Write("bad.scn", "0 boot\n0 boot\n-1 end\n");
    EXPECT_EQ(Main({"run", bad}), 2);
    EXPECT_EQ(Main({"check", bad}), 2);
    EXPECT_EQ(options_, std::nullopt);
    const std::string once = bad + ":2: boot: the device is already booted\n" + bad +
                             ":3: '-1' is not a time: a line starts with ms since power-on (2500) or since the "
                             "previous line (+200)\n" +
                             bad + ": 2 errors, nothing played\n";
    EXPECT_EQ(err_.str(), once + once);
}

TEST_F(ZelDeviceAppTest, UsageErrorsHelpAndVersion)
{
    for (const auto& args : std::vector<std::vector<std::string>>{{},
                                                                  {"play", "x"},
                                                                  {"run"},
                                                                  {"run", "a", "b"},
                                                                  {"run", "a", "--bogus"},
                                                                  {"run", "a", "--trace"},
                                                                  {"check", "a", "--quiet"},
                                                                  {"check-config"},
                                                                  {"check-config", "a", "b"},
                                                                  {"check-config", "--quiet"},
                                                                  {"--help", "x"}}) {
        EXPECT_EQ(Main(args), 2) << testing::PrintToString(args);
    }
    EXPECT_EQ(out_.str(), "");
    EXPECT_EQ(Main({"--version"}), 0);
    EXPECT_EQ(Main({"--help"}), 0);
    EXPECT_EQ(out_.str().rfind("zel_device 0.1.0\nusage:\n", 0), 0u);
}

// The findings themselves are the checker's tests; here: stdout, the status, and no device.
TEST_F(ZelDeviceAppTest, CheckConfigPrintsOneFindingALineAndTellsLoadingByItsStatus)
{
    const std::string good = Write("good.xml", "<ZelConfigs><powermode>60 120</powermode></ZelConfigs>");
    EXPECT_EQ(Main({"check-config", good}), 0);
    EXPECT_NE(out_.str().find("\n1: read into the number-list table: powermode = 60 120\n"), std::string::npos);
    EXPECT_TRUE(out_.str().ends_with("\n-: result: the service loads this file\n"));

    out_.str("");
    const std::string bad = Write("bad.xml", "<ZelConfigs>");
    EXPECT_EQ(Main({"check-config", bad}), 2);
    EXPECT_EQ(out_.str().rfind("1: xml error: ", 0), 0u);
    EXPECT_TRUE(
        out_.str().ends_with("\n-: result: the service does not load this file and starts without a configuration\n"));
    EXPECT_EQ(err_.str(), "");
    EXPECT_EQ(options_, std::nullopt);
}

TEST_F(ZelDeviceAppTest, RunWritesTimelineTraceAndChartAndTellsExpectFailures)
{
    onCall_ = [](FakeDevice& device, const std::string& call) {
        device.trace.Emit("log", {{"level", std::string("I")}, {"msg", call}});
        device.trace.Emit("param.set", {{"key", call}});
    };
    const std::string scenario = Write("run.scn", "0 boot\n100 expect param.set key=boot\n200 expect log msg=x\n");
    const std::string chart = Unique("run.svg");
    EXPECT_EQ(Main({"run", "--chart", chart, scenario, "--data-dir", "/tmp/d", "--log"}), 3);
    EXPECT_EQ(out_.str(),
              "   0.000  param.set  key=boot\n"
              "   0.100  expect  line=2 ok=true\n"
              "   0.200  expect  line=3 ok=false\n");
    EXPECT_NE(err_.str().find(scenario + ":3: failed: 200 expect log msg=x\n"), std::string::npos);
    ASSERT_TRUE(options_.has_value());
    EXPECT_EQ(options_->scenarioDir, std::filesystem::path(scenario).parent_path().string());
    EXPECT_EQ(options_->dataDir, "/tmp/d");
    EXPECT_TRUE(options_->keepDataDir);
    EXPECT_TRUE(options_->log);
    EXPECT_FALSE(options_->realtime);
    std::stringstream svg;
    svg << std::ifstream(chart).rdbuf();
    EXPECT_NE(svg.str().find("</svg>"), std::string::npos);
}

TEST_F(ZelDeviceAppTest, TraceToStdoutReplacesTheTimeline)
{
    onCall_ = [](FakeDevice& device, const std::string& call) {
        device.trace.Emit("log", {{"level", std::string("I")}, {"msg", call}});
        device.trace.Emit("param.set", {{"key", call}});
    };
    const std::string scenario = Write("run.scn", "0 boot\n100 expect param.set key=boot\n200 expect log msg=x\n");
    EXPECT_EQ(Main({"run", scenario, "--trace", "-"}), 3);
    EXPECT_EQ(out_.str(),
              "{\"t\":0,\"ev\":\"log\",\"level\":\"I\",\"msg\":\"boot\"}\n"
              "{\"t\":0,\"ev\":\"param.set\",\"key\":\"boot\"}\n"
              "{\"t\":100,\"ev\":\"expect\",\"line\":2,\"ok\":true}\n"
              "{\"t\":200,\"ev\":\"expect\",\"line\":3,\"ok\":false}\n");
    EXPECT_FALSE(options_->keepDataDir);
}

TEST_F(ZelDeviceAppTest, DeviceFailuresExitOneAndAbandonTheDevice)
{
    onCall_ = [](FakeDevice& device, const std::string&) { device.failure = "the service host died"; };
    const std::string scenario = Write("fail.scn", "0 boot\n");
    EXPECT_EQ(Main({"run", scenario}), 1);
    EXPECT_TRUE(abandoned_);
    EXPECT_EQ(err_.str(), scenario + ":1: the device failed: the service host died\n" +
                              "zel_device: the device or the service failed; the run stopped at 0 ms\n");
}

}  // namespace
}  // namespace Tarvo::Emu
