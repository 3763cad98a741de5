#include "serving_device.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <thread>

#include "control_client.h"
#include "fake_device.h"

namespace Tarvo::Emu {
namespace {

// A serving device over the fake, answering on a socket of its own; what clients print is kept.
class ServingDeviceTest : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/zel_serving_test.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        socket_ = dir_ + "/control";
        std::string error;
        ASSERT_TRUE(device_.Boot(&error));
        ASSERT_TRUE(serving_.Listen(socket_, &error)) << error;
        server_ = std::thread([this] { serving_.Serve(); });
    }
    void TearDown() override
    {
        serving_.Stop();
        if (server_.joinable()) {
            server_.join();
        }
        std::filesystem::remove_all(dir_);
    }
    int Request(const std::string& request, const std::vector<std::string>& lines)
    {
        out_.str("");
        err_.str("");
        return ControlRequest(socket_, request, lines, out_, err_);
    }

    FakeDevice device_;
    ServingDevice serving_{device_, std::chrono::seconds(10)};
    std::string dir_;
    std::string socket_;
    std::thread server_;
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(ServingDeviceTest, SentLinesPlayInOrderWithTheDevicesLineNumbers)
{
    device_.onCall = [](FakeDevice& device, const std::string& call) {
        if (call.rfind("scene", 0) == 0) {
            device.trace.Emit("ipc.done", {{"line", int64_t{1}}, {"code", int64_t{0}}});
        }
    };
    EXPECT_EQ(Request("send", {"scene com.a X 1", "powermode 602"}), 0) << err_.str();
    // Only the request's own events are printed.
    const std::string printed = out_.str();
    EXPECT_NE(printed.find("\"ev\":\"ipc.done\",\"line\":1,\"code\":0}\n"), std::string::npos) << printed;
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1) << printed;
    EXPECT_EQ(device_.Texts(), (std::vector<std::string>{"boot", "scene 1 system com.a X 1", "powermode 602"}));
    // The next request goes on counting.
    EXPECT_EQ(Request("send", {"scene com.b Y 0"}), 0);
    EXPECT_EQ(device_.Texts().back(), "scene 3 system com.b Y 0");
    EXPECT_EQ(Request("trace", {}), 0);
    EXPECT_NE(out_.str().find("\"line\":1"), std::string::npos);
}

TEST_F(ServingDeviceTest, ADumpIsPrintedWithItsLine)
{
    device_.onCall = [](FakeDevice& device, const std::string& call) {
        if (call == "dump 1") {
            device.trace.Emit("dump", {{"line", int64_t{1}}, {"state", TraceObject{R"({"a":1})"}}});
        }
    };
    EXPECT_EQ(Request("send", {"dump"}), 0) << err_.str();
    const std::string printed = out_.str();
    EXPECT_NE(printed.find(",\"ev\":\"dump\",\"line\":1,\"state\":{\"a\":1}}\n"), std::string::npos) << printed;
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1) << printed;
}

TEST_F(ServingDeviceTest, BadRequestsChangeNothingAndSayWhy)
{
    const std::string longLine(ControlChannel::kMaxLine + 1, 'x');
    const std::vector<std::string> tooMany(ControlChannel::kMaxLines + 1, "powermode 1");
    struct Case {
        std::string request;
        std::vector<std::string> lines;
        int status;
        std::string error;
    } cases[] = {
        {"send", {"powermode 1", "nonsense"}, 2, "line 2: unknown command 'nonsense'\n"},
        {"send", {"+5 powermode 1"}, 2, "line 1: a sent line takes no TIME: +5 powermode 1\n"},
        {"send", {"end"}, 2, "line 1: a serving device has no end\n"},
        {"send", {longLine}, 2, "zel_device: a line is longer than 65536 bytes\n"},
        {"send", tooMany, 2, "zel_device: at most 1000 lines at a time\n"},
        {"dance", {}, 2, "zel_device: unknown control request 'dance'\n"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Request(c.request, c.lines), c.status) << c.error;
        EXPECT_EQ(err_.str(), c.error);
    }
    EXPECT_EQ(device_.Texts(), std::vector<std::string>{"boot"});
}

TEST_F(ServingDeviceTest, RefusedCommandStopsTheRestAndFailedExpectGoesOn)
{
    device_.refuse["powermode"] = "no power today";
    EXPECT_EQ(Request("send", {"expect param.set", "scene com.a X 1", "powermode 1", "scene com.b X 1"}), 1);
    EXPECT_EQ(err_.str(), "expect failed\nzel_device: powermode 1: no power today\n");
    EXPECT_EQ(device_.Texts(), (std::vector<std::string>{"boot", "scene 1 system com.a X 1", "powermode 1"}));
}

}  // namespace
}  // namespace Tarvo::Emu
