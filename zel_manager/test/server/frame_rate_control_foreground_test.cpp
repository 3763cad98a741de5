// The foreground stack, power mode, thermal forcing and light state as the frame-rate arbiter hears them.
#include <gtest/gtest.h>

#include <mutex>

#include "frame_rate_control.h"
#include "hilog.h"
#include "platform_test_support.h"
#include "recording_render_service.h"
#include "virtual_clock.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::LOG_DEBUG;
using HiviewDFX::LOG_INFO;
using HiviewDFX::LOG_WARN;
using Test::RecordingRenderService;
using Strings = std::vector<std::string>;

constexpr int32_t kForeground = 2;
constexpr int32_t kBackground = 4;
const std::string kDesktop = "com.tarvo.vistadeck";
const std::string kThermalSent = "FrameRateControl SetThermForceFrameRate send to MXO success";
const std::string kPowerSent = "FrameRateControl SetPowerModeFrameRate send to MOX success";

std::string Pkg(const std::string& pkgName, int32_t pid)
{
    return "pkg 1 " + pkgName + ":" + std::to_string(pid) + ":-1";
}
}  // namespace

class FrameRateControlForegroundTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();  // before the task queue's runner exists
        arbiter_ = samgr_.AddAbility<RecordingRenderService>(IRenderService::RENDER_SERVICE_ID, renderProcess_, false);
        FrameRateControl::SetBasicSceneAttributes("START_APP", "0");
        control_ = FrameRateControl::GetInstance();
    }

    void Report(const std::string& pkgName, int32_t pid, int32_t state, bool focused = false)
    {
        AppExecFwk::AppStateData data;
        data.bundleName = pkgName;
        data.pid = pid;
        data.state = state;
        data.isFocused = focused;
        control_->OnForegroundApplicationChanged(data);
    }

    std::shared_ptr<VirtualProcess> renderProcess_ = Tarvo::Test::MakeProcess(20, "render_service");
    Tarvo::Test::ScopedServiceManager samgr_;
    sptr<RecordingRenderService> arbiter_;
    sptr<FrameRateControl> control_;
    HiviewDFX::LogCapture log_;
};

TEST_F(FrameRateControlForegroundTest, LeavingTheTopHandsTheForegroundBackToTheApplicationBelow)
{
    Report("com.example.mail", 101, kForeground);
    Report("com.example.maps", 202, kForeground);
    Report("com.example.maps", 202, kBackground);
    EXPECT_EQ(arbiter_->Take(),
              (Strings{Pkg("com.example.mail", 101), Pkg("com.example.maps", 202), Pkg("com.example.mail", 101)}));
    EXPECT_TRUE(log_.Contains(
        LOG_DEBUG, "FrameRateControl OnForegroundApplicationChanged pkgName = com.example.maps, focus = 0, state = 4"));

    // Coming back moves an entry to the top with its new id; leaving from below is silent.
    Report("com.example.maps", 303, kForeground);
    Report("com.example.mail", 101, kBackground);
    EXPECT_EQ(arbiter_->Take(), Strings{Pkg("com.example.maps", 303)});

    // The last one leaving sends nothing; then there is nothing left to leave.
    Report("com.example.maps", 303, kBackground);
    Report("com.example.music", 404, kBackground);
    EXPECT_TRUE(arbiter_->Take().empty());
    EXPECT_EQ(log_.Count(LOG_INFO, "FrameRateControl OnForegroundApplicationChanged No package name exit."), 1u);

    // mail was removed from below, so it is not on the stack any more.
    Report("com.example.music", 404, kForeground);
    Report("com.example.music", 404, kBackground);
    EXPECT_EQ(arbiter_->Take(), Strings{Pkg("com.example.music", 404)});
}

TEST_F(FrameRateControlForegroundTest, RepeatsAndOtherStatesAreDroppedButAnEmptyNameStillCounts)
{
    Report("com.example.mail", 101, kForeground);
    Report("com.example.mail", 101, kForeground);
    EXPECT_EQ(
        log_.Count(LOG_DEBUG, "FrameRateControl OnForegroundApplicationChanged Repeatedly enter the package name."),
        1u);
    Report("com.example.mail", 101, 3);
    Report("com.example.mail", 101, 1);
    EXPECT_EQ(arbiter_->Take(), Strings{Pkg("com.example.mail", 101)});

    Report("", 7, kForeground);
    EXPECT_TRUE(log_.Contains(LOG_INFO, "FrameRateControl OnForegroundApplicationChanged Invalid package name."));
    EXPECT_EQ(arbiter_->Take(), Strings{Pkg("", 7)});
    Report("", 7, kBackground);
    EXPECT_EQ(arbiter_->Take(), Strings{Pkg("com.example.mail", 101)});
}

TEST_F(FrameRateControlForegroundTest, TheDesktopIsForegroundExactlyWhileItHasFocus)
{
    Report("com.example.mail", 101, kForeground);
    Report(kDesktop, 50, kBackground, true);
    Report(kDesktop, 50, kForeground, false);
    Report(kDesktop, 50, kForeground, false);  // no longer on the stack: nothing changes
    EXPECT_EQ(arbiter_->Take(),
              (Strings{Pkg("com.example.mail", 101), Pkg(kDesktop, 50), Pkg("com.example.mail", 101)}));
    EXPECT_TRUE(log_.Contains(
        LOG_DEBUG,
        "FrameRateControl OnForegroundApplicationChanged pkgName = com.tarvo.vistadeck, focus = 0, state = 2"));
}

TEST_F(FrameRateControlForegroundTest, AForegroundChangeDuringAFreezingSceneIsSentWhenItEnds)
{
    Report("com.example.mail", 101, kForeground);
    control_->SetScene("com.tarvo.systemui", "START_APP", 1);
    Report("com.example.maps", 202, kForeground);
    EXPECT_TRUE(log_.Contains(LOG_INFO, "FrameRateControl NotifyPkgNameChange, cat't chane pkg, please wait"));
    control_->SetScene("com.tarvo.systemui", "START_APP", 0);
    EXPECT_EQ(arbiter_->Take(), (Strings{Pkg("com.example.mail", 101), "VOTER_SCENE on 0-0", "VOTER_SCENE off 0-0",
                                         Pkg("com.example.maps", 202)}));
}

TEST_F(FrameRateControlForegroundTest, ThermalForcingIsWithdrawnUnderTheRateItWasSentWith)
{
    control_->ThermalForceInterface(90);
    control_->ThermalForceInterface(60);
    control_->ThermalForceInterface(0);
    control_->ThermalForceInterface(0);
    EXPECT_EQ(arbiter_->Take(), (Strings{"VOTER_THERMAL on 0-90", "VOTER_THERMAL on 0-60", "VOTER_THERMAL off 0-60"}));
    EXPECT_EQ(log_.Count(LOG_INFO, kThermalSent), 3u);
    EXPECT_EQ(log_.Messages(LOG_WARN), Strings{"FrameRateControl SetThermForceFrameRate repeat operation"});

    control_->ThermalForceInterface(90);
    control_->ThermalForceInterface(90);
    EXPECT_EQ(arbiter_->Take(), Strings{"VOTER_THERMAL on 0-90"});
    EXPECT_EQ(log_.Count(LOG_WARN, "FrameRateControl SetThermForceFrameRate repeat operation"), 2u);
}

TEST_F(FrameRateControlForegroundTest, PowerModeVotesTheConfiguredPairOr120)
{
    FrameRateControl::PowerModeInterface(601);
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    numbers["powermode"] = {60, 90, 120};  // malformed: falls back as if absent
    FrameRateControl::PowerModeInterface(603);
    EXPECT_EQ(arbiter_->Take(), (Strings{"VOTER_THERMAL on 0-120", "VOTER_THERMAL on 0-120"}));

    numbers["powermode"] = {60, 90};
    FrameRateControl::PowerModeInterface(601);
    FrameRateControl::PowerModeInterface(603);  // saving too, yet with the second value
    FrameRateControl::PowerModeInterface(600);
    FrameRateControl::PowerModeInterface(600);  // no repeat suppression
    FrameRateControl::PowerModeInterface(602);
    EXPECT_EQ(arbiter_->Take(), (Strings{"VOTER_THERMAL on 0-60", "VOTER_THERMAL on 0-90", "VOTER_THERMAL off 0-90",
                                         "VOTER_THERMAL off 0-90", "VOTER_THERMAL off 0-90"}));
    EXPECT_EQ(log_.Count(LOG_INFO, kPowerSent), 7u);
}

TEST_F(FrameRateControlForegroundTest, TheLightFactorIsSafeUnlessBothLightsAreOnAndOnlyChangesAreSent)
{
    control_->NotifyLightState(1, true);
    control_->NotifyLightState(0, true);
    control_->NotifyLightState(0, true);
    control_->NotifyLightState(7, false);  // unknown type: stored nowhere, status unchanged
    control_->NotifyLightState(1, false);
    EXPECT_EQ(arbiter_->Take(), (Strings{"light 1", "light 0", "light 1"}));
    EXPECT_EQ(
        log_.Messages(LOG_INFO),
        (Strings{
            "FrameRateControl  NotifyLightState type = 1, state = 1",
            "ZelMoxAdapter SetLightFactorStatus success ,state = 1", "FrameRateControl  NotifyLightState state = 1",
            "FrameRateControl  NotifyLightState type = 0, state = 1",
            "ZelMoxAdapter SetLightFactorStatus success ,state = 0", "FrameRateControl  NotifyLightState state = 0",
            "FrameRateControl  NotifyLightState type = 0, state = 1",
            "FrameRateControl  NotifyLightState type = 7, state = 0",
            "FrameRateControl  NotifyLightState type = 1, state = 0",
            "ZelMoxAdapter SetLightFactorStatus success ,state = 1", "FrameRateControl  NotifyLightState state = 1"}));

    log_.Clear();
    control_->SetLightAndBrightnessThreshold();
    EXPECT_EQ(log_.Lines(), Strings{"I FrameRateControl SetLightRange success"});
    EXPECT_TRUE(arbiter_->Take().empty());
}

}  // namespace Tarvo::Vantel
