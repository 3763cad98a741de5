// What the scenarios cannot reach: configurations without the switch or with incomplete entries,
// stored modes of every shape, and SetResolution, which nothing in the service calls.
#include "resolution_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "display_manager_service.h"
#include "ipc_object_stub.h"
#include "parameter_service.h"
#include "settings_provider.h"
#include "test_device_context.h"
#include "virtual_clock.h"
#include "zel_log.h"
#include "zel_manager_config.h"
#include "zel_manager_service.h"

namespace Tarvo::Vantel {
namespace {
using Emu::Test::TestDeviceContext;
using Strings = std::vector<std::string>;

constexpr const char* MODE_KEY = "settings.display.resolution_mode";

class ResolutionManagerTest : public testing::Test {
protected:
    void SetUp() override
    {
        ScopedProcess scope(service_);
        ctx_.AddSystemAbility(ZelManagerService::ZEL_MANAGER_SERVICE_ID,
                              sptr<IRemoteObject>(new IPCObjectStub(u"Tarvo.IZelManager")));
        // Created here so that the retries run on a thread of the service's process.
        (void)ResolutionManager::GetInstance();
        ZelManagerConfig::GetEnableConfig() = {{"supportResolutionChange", true}};
        ZelManagerConfig::GetIntNumbersConfig() = {{"resolutionStyle", {2}},
                                                   {"defaultResolutionMode", {3}},
                                                   {"highLevel", {1200, 2600, 540}},
                                                   {"middleLevel", {900, 1950, 405}},
                                                   {"lowLevel", {600, 1300, 270}}};
        params_.Start();
        ASSERT_TRUE(provider_.Start());
        logs_.Clear();
    }

    void InService(const std::function<void(ResolutionManager&)>& call)
    {
        ScopedProcess scope(service_);
        call(*ResolutionManager::GetInstance());
        ASSERT_TRUE(VirtualClock::WaitQuiet());
    }
    void Configure()
    {
        InService([](ResolutionManager& manager) { manager.ConfigureResolutionMode(); });
    }

    // Our own messages as "L text"; the settings helper's are left out.
    Strings Logged() const
    {
        Strings lines;
        for (const HiviewDFX::LogRecord& record : logs_.Records()) {
            const std::string& text = record.message;
            bool helper = text.find("DataShareHelper") == 0 || text.find("dataShareHelper_") == 0 ||
                          text.find("SettingsDataHelper") == 0;
            if (record.domain == ZEL_LOG_LABEL.domain && !helper) {
                lines.push_back(std::string(1, HiviewDFX::LevelLetter(record.level)) + " " + text);
            }
        }
        return lines;
    }
    // "op key=value" of every settings write.
    Strings Writes() const
    {
        Strings lines;
        for (const Emu::TraceEvent& event : ctx_.EventsOf("settings.write")) {
            lines.push_back(Emu::ValueText(*event.Find("op")) + " " + Emu::ValueText(*event.Find("key")) + "=" +
                            Emu::ValueText(*event.Find("value")));
        }
        return lines;
    }

    TestDeviceContext ctx_{TestDeviceContext::Clock::VIRTUAL};
    std::shared_ptr<VirtualProcess> service_ = ctx_.MakeServiceProcess("zel_manager");
    Emu::SettingsProvider provider_{ctx_};
    Emu::ParameterService params_{ctx_};
    HiviewDFX::LogCapture logs_;
};

TEST_F(ResolutionManagerTest, AStoredModeIsReadAsADecimalIntAndOnlyANonNumberFallsBackToTheDefault)
{
    struct Case {
        const char* stored;
        const char* log;    // a line the run logs
        std::string first;  // the first settings write, and how many there are
        size_t count;
    };
    const char* applied = "I ConfigureResolutionMode resolutionMode is not empty,should return";
    const char* fallback = "update settings.display.resolution_mode=3";  // then the style, mode and levels
    for (const Case& c :
         {Case{"2", applied, "update settings.display.resolution_mode=2", 1},
          Case{"2x", applied, "update settings.display.resolution_mode=2", 1},
          Case{" +2", applied, "update settings.display.resolution_mode=2", 1},
          Case{"-1", "W SetResolutionMode the mode is invalidate mode=-1", "", 0},
          Case{"two", "W ConfigureResolutionMode resolutionMode is not a number: two", fallback, 6},
          Case{"2147483648", "W ConfigureResolutionMode resolutionMode is not a number: 2147483648", fallback, 6}}) {
        ASSERT_TRUE(provider_.Preset(MODE_KEY, c.stored));
        size_t before = Writes().size();
        logs_.Clear();
        Configure();
        EXPECT_THAT(Logged(), testing::Contains(c.log)) << c.stored;
        Strings writes = Writes();
        EXPECT_EQ(writes.size() - before, c.count) << c.stored;
        EXPECT_EQ(writes.size() > before ? writes[before] : "", c.first) << c.stored;
    }
}

TEST_F(ResolutionManagerTest, WithoutTheSwitchOrWithIncompleteOrInvalidSettingsNothingIsWritten)
{
    ZelManagerConfig::GetEnableConfig().clear();
    Configure();
    ZelManagerConfig::GetEnableConfig() = {{"supportResolutionChange", false}};
    Configure();
    EXPECT_TRUE(ctx_.EventsOf("param.set").empty());

    ZelManagerConfig::GetEnableConfig() = {{"supportResolutionChange", true}};
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    numbers["defaultResolutionMode"] = {0};
    Configure();
    ASSERT_TRUE(VirtualClock::AdvanceBy(std::chrono::milliseconds(2000)));
    // The first read is never retried again: the counter only grows.
    numbers["defaultResolutionMode"] = {4};
    Configure();
    numbers.erase("defaultResolutionMode");
    Configure();
    numbers.erase("resolutionStyle");
    Configure();
    // A level without its numbers is not stored, and says nothing of its own.
    numbers.erase("lowLevel");
    InService([](ResolutionManager& manager) { manager.SetResolutionMode(1, 0); });

    EXPECT_TRUE(Writes().empty());
    EXPECT_EQ(Logged(), (Strings{"W ConfigureResolutionMode not support Resolution Change",
                                 "W ConfigureResolutionMode not support Resolution Change",
                                 "I ConfigureResolutionMode settings database hasn't initialized, retry times is 0",
                                 "I ConfigureResolutionMode defaultResolutionMode is 0",
                                 "W ConfigureResolutionMode the mode is invalidate mode=0",
                                 "I ConfigureResolutionMode defaultResolutionMode is 4",
                                 "W ConfigureResolutionMode the mode is invalidate mode=4",
                                 "I CheckResolutionParamValid there is no defaultResolutionMode, should return",
                                 "I CheckResolutionParamValid there is no resolutionStyle, should return",
                                 "I GetResolutionParamsByMode failed!  mode=lowLevel width=0, height=0, density=0"}));
}

TEST_F(ResolutionManagerTest, SetResolutionGoesToTheDefaultScreen)
{
    InService([](ResolutionManager& manager) { manager.SetResolution(1200, 2600, 540); });
    Emu::DisplayManagerService display(ctx_);
    display.Start();
    InService([](ResolutionManager& manager) {
        manager.SetResolution(1200, 2600, 540);
        manager.SetResolution(0, 2600, 540);
    });
    EXPECT_EQ(ctx_.EventsOf("screen.resolution").size(), 1U);
    EXPECT_EQ(
        Logged(),
        (Strings{
            "I SetResolution width=1200, height=2600, density=540", "W SetResolution defaultId is invalid",
            "I SetResolution width=1200, height=2600, density=540", "I screen->SetResolution complete return code is 0",
            "I SetResolution width=0, height=2600, density=540", "I screen->SetResolution complete return code is 1"}));
}

}  // namespace
}  // namespace Tarvo::Vantel
