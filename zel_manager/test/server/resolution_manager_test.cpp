#include "resolution_manager.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "display_manager_service.h"
#include "hilog.h"
#include "ipc_object_stub.h"
#include "parameter_service.h"
#include "settings_data_helper.h"
#include "settings_provider.h"
#include "test_device_context.h"
#include "virtual_clock.h"
#include "virtual_process.h"
#include "zel_log.h"
#include "zel_manager_config.h"
#include "zel_manager_service.h"

namespace Tarvo::Vantel {
namespace {

using namespace std::chrono_literals;
using Emu::SettingsProvider;
using Emu::Test::TestDeviceContext;
using HiviewDFX::LogCapture;
using HiviewDFX::LogRecord;

constexpr const char* MODE_KEY = "settings.display.resolution_mode";
constexpr const char* FOLD_PARAM = "const.window.foldscreen.type";

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
        logs_.Clear();
    }

    void Configure()
    {
        ScopedProcess scope(service_);
        ResolutionManager::GetInstance()->ConfigureResolutionMode();
        ASSERT_TRUE(VirtualClock::WaitQuiet());
    }

    static void Advance(std::chrono::milliseconds delta) { ASSERT_TRUE(VirtualClock::AdvanceBy(delta)); }

    // Our own messages only, as "L text"; the settings helper's are left out.
    std::vector<std::string> Logged() const
    {
        std::vector<std::string> lines;
        for (const LogRecord& record : logs_.Records()) {
            const std::string& text = record.message;
            bool helper = text.rfind("DataShareHelper", 0) == 0 || text.rfind("dataShareHelper_", 0) == 0 ||
                          text.rfind("SettingsDataHelper", 0) == 0;
            if (record.tag == ZEL_LOG_LABEL.tag && !helper) {
                lines.push_back(std::string(1, HiviewDFX::LevelLetter(record.level)) + " " + record.message);
            }
        }
        return lines;
    }

    // "t op key=value", refused writes marked.
    std::vector<std::string> Writes() const
    {
        std::vector<std::string> lines;
        for (const Emu::TraceEvent& event : ctx_.EventsOf("settings.write")) {
            std::string line = std::to_string(event.t) + " " + Emu::ValueText(*event.Find("op")) + " " +
                               Emu::ValueText(*event.Find("key")) + "=" + Emu::ValueText(*event.Find("value"));
            lines.push_back(Emu::ValueText(*event.Find("ok")) == "true" ? line : line + " refused");
        }
        return lines;
    }

    std::vector<std::string> ParamsSet() const
    {
        std::vector<std::string> lines;
        for (const Emu::TraceEvent& event : ctx_.EventsOf("param.set")) {
            lines.push_back(Emu::ValueText(*event.Find("key")) + "=" + Emu::ValueText(*event.Find("value")));
        }
        return lines;
    }

    std::string Row(const std::string& key)
    {
        ScopedProcess scope(service_);
        std::string value = "<none>";
        (void)SettingsDataHelper().Query(key, value);
        return value;
    }

    TestDeviceContext ctx_{TestDeviceContext::Clock::VIRTUAL};
    std::shared_ptr<VirtualProcess> service_ = ctx_.MakeServiceProcess("zel_manager");
    SettingsProvider provider_{ctx_};
    Emu::ParameterService params_{ctx_};
    LogCapture logs_;
};

TEST_F(ResolutionManagerTest, WithoutTheSwitchOnlyWarns)
{
    params_.Start();
    ASSERT_TRUE(provider_.Start());
    ZelManagerConfig::GetEnableConfig().clear();
    Configure();
    ZelManagerConfig::GetEnableConfig() = {{"supportResolutionChange", false}};
    Configure();

    EXPECT_EQ(Logged(), (std::vector<std::string>{"W ConfigureResolutionMode not support Resolution Change",
                                                  "W ConfigureResolutionMode not support Resolution Change"}));
    EXPECT_TRUE(ParamsSet().empty());
    EXPECT_TRUE(Writes().empty());
}

TEST_F(ResolutionManagerTest, FoldScreenOnlyPublishesTheRatioAndStyleZero)
{
    params_.Preset(FOLD_PARAM, "1");
    params_.Start();
    ASSERT_TRUE(provider_.Preset(MODE_KEY, "2"));
    ASSERT_TRUE(provider_.Start());
    Configure();
    {
        ScopedProcess scope(service_);
        ResolutionManager::InitDefaultResolutionMode();
    }

    EXPECT_EQ(ParamsSet(),
              (std::vector<std::string>{"zel.currunt_resolution_ratio=1", "zel.currunt_resolution_ratio=1"}));
    EXPECT_EQ(Writes(), (std::vector<std::string>{"0 insert settings.display.resolution_style=0",
                                                  "0 insert settings.display.resolution_style=0"}));
    EXPECT_EQ(Logged(),
              (std::vector<std::string>{"I ConfigureResolutionMode don't process the fold screen type, should return",
                                        "I InitDefaultResolutionMode after Insert ret=0"}));
    EXPECT_EQ(Row(MODE_KEY), "2");
}

TEST_F(ResolutionManagerTest, DefaultModeWithoutConfigurationOnlyPublishesTheRatio)
{
    params_.Start();
    ASSERT_TRUE(provider_.Start());
    {
        ScopedProcess scope(service_);
        ResolutionManager::InitDefaultResolutionMode();
    }
    EXPECT_EQ(ParamsSet(), std::vector<std::string>{"zel.currunt_resolution_ratio=1"});
    EXPECT_TRUE(Writes().empty());
    EXPECT_TRUE(Logged().empty());
}

TEST_F(ResolutionManagerTest, FirstBootWritesTheDefaultModeTwiceAndEveryLevel)
{
    params_.Start();
    ASSERT_TRUE(provider_.Start());
    Configure();
    // The first read is retried once, after 2 s; the database is empty then as well.
    EXPECT_TRUE(Writes().empty());
    Advance(2000ms);

    EXPECT_EQ(ParamsSet(),
              (std::vector<std::string>{"zel.currunt_resolution_ratio=1", "zel.currunt_resolution_ratio=1"}));
    EXPECT_EQ(Writes(), (std::vector<std::string>{"2000 insert settings.display.resolution_mode=3",
                                                  "2000 insert settings.display.resolution_style=2",
                                                  "2000 update settings.display.resolution_mode=3",
                                                  "2000 insert settings.display.resolution_high=1200x2600",
                                                  "2000 insert settings.display.resolution_middle=900x1950",
                                                  "2000 insert settings.display.resolution_low=600x1300"}));
    EXPECT_EQ(Row("settings.display.resolution_high"), "1200x2600");
    EXPECT_EQ(Row(MODE_KEY), "3");
    const std::string high = "I GetResolutionParamsByMode success! mode=highLevel width=1200, height=2600, density=540";
    EXPECT_EQ(Logged(),
              (std::vector<std::string>{
                  "I ConfigureResolutionMode settings database hasn't initialized, retry times is 0",
                  "I ConfigureResolutionMode defaultResolutionMode is 3",
                  "I ConfigureResolutionMode resolutionMode hasn't been set, use default resolutionMode", high,
                  "W SetResolutionMode Update mode=3 result=0", "I SetInitialDatabaseValue defaultResolutionMode is 3",
                  high, "I GetResolutionParamsByMode success! mode=middleLevel width=900, height=1950, density=405",
                  "I GetResolutionParamsByMode success! mode=lowLevel width=600, height=1300, density=270",
                  "I SetInitialDatabaseValue init settings database success"}));
}

TEST_F(ResolutionManagerTest, StoredModeIsRewrittenWithoutTouchingTheLevels)
{
    params_.Start();
    ASSERT_TRUE(provider_.Preset(MODE_KEY, "2"));
    ASSERT_TRUE(provider_.Start());
    Configure();
    EXPECT_EQ(Writes(), std::vector<std::string>{"0 update settings.display.resolution_mode=2"});

    // Without complete middle-level numbers the stored mode is left alone.
    ZelManagerConfig::GetIntNumbersConfig().erase("middleLevel");
    Configure();
    EXPECT_EQ(Writes().size(), 1U);
    EXPECT_EQ(Logged().back(), "I ConfigureResolutionMode resolutionMode is not empty,should return");
    EXPECT_EQ(Row("settings.display.resolution_middle"), "<none>");
}

TEST_F(ResolutionManagerTest, StoredModeThatIsNotANumberCountsAsAbsent)
{
    params_.Start();
    ASSERT_TRUE(provider_.Preset(MODE_KEY, "two"));
    ASSERT_TRUE(provider_.Start());
    Configure();

    EXPECT_EQ(Logged().front(), "W ConfigureResolutionMode resolutionMode is not a number: two");
    EXPECT_EQ(Row(MODE_KEY), "3");
    EXPECT_EQ(Row("settings.display.resolution_low"), "600x1300");
}

TEST_F(ResolutionManagerTest, IncompleteOrInvalidDefaultsWriteNothing)
{
    params_.Start();
    ASSERT_TRUE(provider_.Start());
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    numbers["defaultResolutionMode"] = {0};
    Configure();
    Advance(2000ms);
    // The first read is never retried again: the counter only grows.
    numbers["defaultResolutionMode"] = {4};
    Configure();
    numbers.erase("defaultResolutionMode");
    Configure();
    numbers.erase("resolutionStyle");
    Configure();

    EXPECT_TRUE(Writes().empty());
    EXPECT_EQ(Logged(), (std::vector<std::string>{
                            "I ConfigureResolutionMode settings database hasn't initialized, retry times is 0",
                            "I ConfigureResolutionMode defaultResolutionMode is 0",
                            "W ConfigureResolutionMode the mode is invalidate mode=0",
                            "I ConfigureResolutionMode defaultResolutionMode is 4",
                            "W ConfigureResolutionMode the mode is invalidate mode=4",
                            "I CheckResolutionParamValid there is no defaultResolutionMode, should return",
                            "I CheckResolutionParamValid there is no resolutionStyle, should return"}));
}

TEST_F(ResolutionManagerTest, UnreachableDatabaseGetsFiveWriteRetriesThenOnlyTheStyle)
{
    params_.Start();
    Configure();
    Advance(2000ms);
    for (int i = 0; i < 4; ++i) {
        Advance(5000ms);
    }
    // Up just before the sixth attempt, which inserts the style and stops there.
    ASSERT_TRUE(provider_.Start());
    Advance(4999ms);
    EXPECT_TRUE(Writes().empty());
    Advance(1ms);

    EXPECT_EQ(Writes(), std::vector<std::string>{"27000 insert settings.display.resolution_style=2"});
    std::vector<std::string> expected = {
        "I ConfigureResolutionMode settings database hasn't initialized, retry times is 0",
        "I ConfigureResolutionMode defaultResolutionMode is 3",
        "I ConfigureResolutionMode resolutionMode hasn't been set, use default resolutionMode",
        "I GetResolutionParamsByMode success! mode=highLevel width=1200, height=2600, density=540",
        "W SetResolutionMode Update mode=3 result=-1"};
    for (int retry = 0; retry < 5; ++retry) {
        expected.push_back("I SetInitialDatabaseValue settings database hasn't initialized, retry times is " +
                           std::to_string(retry));
    }
    expected.push_back("I SetInitialDatabaseValue system error, the settings database cannot initialized");
    EXPECT_EQ(Logged(), expected);
    EXPECT_EQ(Row(MODE_KEY), "<none>");
}

TEST_F(ResolutionManagerTest, SetResolutionModeRefusesUnknownModesAndIncompleteLevels)
{
    params_.Start();
    ASSERT_TRUE(provider_.Start());
    ZelManagerConfig::GetIntNumbersConfig().erase("lowLevel");
    {
        ScopedProcess scope(service_);
        ResolutionManager::GetInstance()->SetResolutionMode(5, 0);
        ResolutionManager::GetInstance()->SetResolutionMode(1, 0);
        ResolutionManager::GetInstance()->SetResolutionMode(2, 7);
    }
    EXPECT_EQ(Writes(), std::vector<std::string>{"0 insert settings.display.resolution_mode=2"});
    EXPECT_EQ(Logged(), (std::vector<std::string>{
                            "W SetResolutionMode the mode is invalidate mode=5",
                            "I GetResolutionParamsByMode failed!  mode=lowLevel width=0, height=0, density=0",
                            "I GetResolutionParamsByMode success! mode=middleLevel width=900, height=1950, density=405",
                            "W SetResolutionMode Update mode=2 result=0"}));
}

TEST_F(ResolutionManagerTest, SetResolutionGoesToTheDefaultScreen)
{
    {
        ScopedProcess scope(service_);
        ResolutionManager::GetInstance()->SetResolution(1200, 2600, 540);
    }
    Emu::DisplayManagerService display(ctx_);
    display.Start();
    {
        ScopedProcess scope(service_);
        ResolutionManager::GetInstance()->SetResolution(1200, 2600, 540);
        ResolutionManager::GetInstance()->SetResolution(0, 2600, 540);
    }
    EXPECT_EQ(ctx_.EventsOf("screen.resolution").size(), 1U);
    EXPECT_EQ(
        Logged(),
        (std::vector<std::string>{
            "I SetResolution width=1200, height=2600, density=540", "W SetResolution defaultId is invalid",
            "I SetResolution width=1200, height=2600, density=540", "I screen->SetResolution complete return code is 0",
            "I SetResolution width=0, height=2600, density=540", "I screen->SetResolution complete return code is 1"}));
}

}  // namespace
}  // namespace Tarvo::Vantel
