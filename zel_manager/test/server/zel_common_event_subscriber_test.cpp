// Package and power-save common events as the subscriber hands them on: package names to the game
// policy, power modes to frame-rate control.
#include "zel_common_event_subscriber.h"

#include <gtest/gtest.h>

#include <memory>

#include "common_event_support.h"
#include "hilog.h"
#include "matching_skills.h"
#include "virtual_clock.h"
#include "want.h"

namespace Tarvo::Vantel {
namespace {
using EventFwk::CommonEventData;
using EventFwk::CommonEventSupport;
using HiviewDFX::LogCapture;

class ZelCommonEventSubscriberTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();
        EventFwk::MatchingSkills skills;
        skills.AddEvent(CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED);
        subscriber_ = std::make_shared<ZelCommonEventSubscriber>(EventFwk::CommonEventSubscribeInfo(skills));
    }

    void Receive(const std::string& action, const std::string& bundleName, int32_t code = 0)
    {
        AAFwk::Want want;
        want.SetAction(action);
        want.SetElement(AppExecFwk::ElementName("", bundleName, ""));
        subscriber_->OnReceiveEvent(CommonEventData(want, code, ""));
        ASSERT_TRUE(VirtualClock::WaitQuiet());
    }

    LogCapture log_;
    std::shared_ptr<ZelCommonEventSubscriber> subscriber_;
};

TEST_F(ZelCommonEventSubscriberTest, PackageEventsReachTheGamePolicyEvenWithoutABundleName)
{
    Receive(CommonEventSupport::COMMON_EVENT_PACKAGE_REMOVED, "com.example.game");
    EXPECT_EQ(log_.Lines(),
              std::vector<std::string>{"I ZelCommonEventSubscriber::OnReceiveEvent remove pkgName = com.example.game"});

    log_.Clear();
    Receive(CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, "");
    EXPECT_EQ(log_.Lines(), (std::vector<std::string>{"E GameFpsPolicy::AddOrRemoveApp pkgName verify fail.",
                                                      "I ZelCommonEventSubscriber::OnReceiveEvent add pkgName = "}));

    // A new package is sent for classification; with the solution off the query stops at once.
    log_.Clear();
    Receive(CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, "com.example.game");
    EXPECT_TRUE(
        log_.Contains(HiviewDFX::LOG_INFO, "ZelCommonEventSubscriber::OnReceiveEvent add pkgName = com.example.game"));
    EXPECT_TRUE(log_.Contains(HiviewDFX::LOG_INFO,
                              "GameFpsPolicy QueryGamePkg] The solution is not enabled,Check configuration file."));
}

TEST_F(ZelCommonEventSubscriberTest, PowerSaveChangePassesTheEventCodeAsTheMode)
{
    Receive(CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED, "", 601);
    std::vector<std::string> lines = log_.Lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.front(), "I PowerModeId is 601");
    EXPECT_EQ(lines.back(), "I FrameRateControl SetPowerModeFrameRate send to MOX success");
}

TEST_F(ZelCommonEventSubscriberTest, EmptyActionIsAnErrorAndAnyOtherActionIsSilent)
{
    Receive("", "com.example.game");
    EXPECT_EQ(log_.Lines(), std::vector<std::string>{"E failed, empty action: , or invalid event handler"});

    log_.Clear();
    Receive("usual.event.SCREEN_ON", "com.example.game", 601);
    EXPECT_TRUE(log_.Lines().empty());
}

}  // namespace
}  // namespace Tarvo::Vantel
