// What frame-rate control and its adapter tell the arbiter in the cases a device cannot stage;
// the scenes, the foreground stack, thermal, power and light are played in examples/scenarios.
#include "frame_rate_control.h"

#include <gtest/gtest.h>

#include "hilog.h"
#include "platform_test_support.h"
#include "recording_render_service.h"
#include "virtual_clock.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::LOG_INFO;
using Strings = std::vector<std::string>;

class FrameRateControlTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();  // before the task queue's runner exists
        arbiter_ =
            samgr_.AddAbility<Vantel::Test::RecordingRenderService>(IRenderService::RENDER_SERVICE_ID, renderProcess_);
    }

    void Report(const std::string& pkgName, int32_t pid, int32_t state)
    {
        AppExecFwk::AppStateData data;
        data.bundleName = pkgName;
        data.pid = pid;
        data.state = state;
        FrameRateControl::GetInstance()->OnForegroundApplicationChanged(data);
    }

    std::shared_ptr<VirtualProcess> renderProcess_ = Tarvo::Test::MakeProcess(20, "render_service");
    Tarvo::Test::ScopedServiceManager samgr_;
    sptr<Vantel::Test::RecordingRenderService> arbiter_;
    HiviewDFX::LogCapture log_;
};

TEST_F(FrameRateControlTest, AnUnnamedForegroundRecordIsLoggedAndStillMovesTheStack)
{
    Report("com.example.mail", 101, 2);
    Report("", 7, 2);
    Report("", 7, 4);
    EXPECT_EQ(arbiter_->Take(),
              (Strings{"pkg 1 com.example.mail:101:-1", "pkg 1 :7:-1", "pkg 1 com.example.mail:101:-1"}));
    EXPECT_EQ(log_.Count(LOG_INFO, "FrameRateControl OnForegroundApplicationChanged Invalid package name."), 2u);
}

TEST_F(FrameRateControlTest, PowerModeVotes120UnlessExactlyTwoRatesAreConfigured)
{
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    numbers["powermode"] = {60, 90, 120};
    FrameRateControl::PowerModeInterface(601);
    numbers["powermode"] = {60};
    FrameRateControl::PowerModeInterface(601);
    EXPECT_EQ(arbiter_->Take(), (Strings{"VOTER_THERMAL on 0-120 ", "VOTER_THERMAL on 0-120 "}));
}

TEST_F(FrameRateControlTest, TheLightRangeIsOnlyLogged)
{
    FrameRateControl::GetInstance()->SetLightAndBrightnessThreshold();
    EXPECT_EQ(log_.Lines(), Strings{"I FrameRateControl SetLightRange success"});
    EXPECT_TRUE(arbiter_->Take().empty());
}

TEST_F(FrameRateControlTest, TheAdapterSendsAPackageListInOneNoticeAndAnEmptyOneNotAtAll)
{
    ZelMoxAdapter::GetInstance()->SendPkgToMOX({"com.a:1:0", "com.b:2:1"});
    ZelMoxAdapter::GetInstance()->SendPkgToMOX({});
    EXPECT_EQ(arbiter_->Take(), Strings{"pkg 2 com.a:1:0 com.b:2:1"});
    EXPECT_EQ(log_.Messages(LOG_INFO), (Strings{"ZelMoxAdapter SendPkgToMOX pkgName = com.a:1:0",
                                                "ZelMoxAdapter SendPkgToMOX no pkgName send."}));
}

}  // namespace
}  // namespace Tarvo::Vantel
