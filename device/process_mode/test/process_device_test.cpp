#include "process_device.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

namespace Tarvo::Emu {
namespace {
constexpr auto kQuietLimit = std::chrono::milliseconds(20000);

bool Traced(const Trace& trace, size_t from, const std::string& ev, const std::string& field, const TraceValue& value)
{
    for (const TraceEvent& event : trace.EventsSince(from)) {
        const TraceValue* found = event.Find(field);
        if (event.ev == ev && found != nullptr && *found == value) {
            return true;
        }
    }
    return false;
}

ProcessDeviceSetup TestSetup()
{
    ProcessDeviceSetup setup;
    setup.device.serviceLibrary = ZEL_SERVICE_LIBRARY;
    setup.device.defaultConfig = ZEL_DEFAULT_CONFIG;
    setup.device.scenarioDir = ".";
    setup.executable = ZEL_DEVICE_TOOL;
    return setup;
}

RawRequest ToCallback(const std::string& bundle, const std::string& callback)
{
    RawRequest raw;
    raw.caller = {CallerSpec::Kind::SYSTEM, {}};
    raw.code = 1;
    raw.fields = {{RawField::Kind::UINT32, "", {90}}};
    raw.bundle = bundle;
    raw.callback = callback;
    return raw;
}

// A game's process killed outright: its callback's proxies die through the transport, a request to
// it is unsent, and the run folder goes with the device.
TEST(ProcessDeviceTest, KilledGameLeavesDeadCallbacksAndTheRunFolderGoes)
{
    std::string runPath;
    {
        ProcessDevice device(TestSetup());
        ASSERT_EQ(device.Failure(), "");
        runPath = device.RunPath();
        ASSERT_TRUE(std::filesystem::exists(runPath + "/hub"));
        std::string error;
        ASSERT_TRUE(device.InstallPackage({"com.example.kart", 0, true, false, std::nullopt}, &error)) << error;
        ASSERT_TRUE(device.Boot(&error)) << error;
        ASSERT_TRUE(device.Register(3, "com.example.kart", "cb3", &error)) << error;
        ASSERT_TRUE(device.SendRaw(4, ToCallback("com.example.kart", "cb3"), &error)) << error;
        ASSERT_TRUE(device.WaitQuiet(kQuietLimit));
        Trace& trace = device.GetTrace();
        EXPECT_TRUE(Traced(trace, 0, "ipc.done", "line", int64_t{3}));
        EXPECT_TRUE(Traced(trace, 0, "ipc.done", "line", int64_t{4}));

        const pid_t game = device.AppRealPid("com.example.kart");
        ASSERT_GT(game, 0);
        ASSERT_TRUE(device.KillApp("com.example.kart", &error));
        EXPECT_NE(kill(game, 0), 0);
        ASSERT_TRUE(device.SendRaw(5, ToCallback("com.example.kart", "cb3"), &error)) << error;
        ASSERT_TRUE(device.WaitQuiet(kQuietLimit));
        EXPECT_TRUE(Traced(trace, 0, "ipc.unsent", "line", int64_t{5}));
        EXPECT_FALSE(Traced(trace, 0, "ipc.done", "line", int64_t{5}));
        EXPECT_EQ(device.Failure(), "");
        device.Shutdown();
    }
    EXPECT_FALSE(std::filesystem::exists(runPath));
}

// A request no process can deliver is traced as unsent, and controls for missing things say why.
TEST(ProcessDeviceTest, UnsentRequestsAndRefusedControls)
{
    ProcessDevice device(TestSetup());
    ASSERT_EQ(device.Failure(), "");
    std::string error;
    // Before boot there is no service to send to.
    ASSERT_TRUE(device.SendResolution(2, {CallerSpec::Kind::NATIVE, {}}, 1, 0, &error));
    ASSERT_TRUE(device.WaitQuiet(kQuietLimit));
    EXPECT_TRUE(Traced(device.GetTrace(), 0, "ipc.unsent", "line", int64_t{2}));
    EXPECT_FALSE(device.KillApp("com.not.installed", &error));
    EXPECT_EQ(error, "package com.not.installed is not installed");
    RawRequest raw;
    raw.bundle = "com.tarvo.vistadeck";
    raw.callback = "none";
    EXPECT_FALSE(device.SendRaw(3, raw, &error));
    EXPECT_EQ(error, "no callback none was registered for com.tarvo.vistadeck");
}

}  // namespace
}  // namespace Tarvo::Emu
