// Common events the subscriber drops; the package and power-save events it hands on are played in
// examples/scenarios (game_classification.scn, thermal_power_light.scn).
#include "zel_common_event_subscriber.h"

#include <gtest/gtest.h>

#include "common_event_support.h"
#include "hilog.h"
#include "matching_skills.h"
#include "want.h"

namespace Tarvo::Vantel {
namespace {
TEST(ZelCommonEventSubscriberTest, AnEmptyActionIsAnErrorAndAnUnknownOneIsIgnored)
{
    EventFwk::MatchingSkills skills;
    skills.AddEvent(EventFwk::CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED);
    ZelCommonEventSubscriber subscriber{EventFwk::CommonEventSubscribeInfo(skills)};
    HiviewDFX::LogCapture log;
    for (const std::string action : {"", "usual.event.SCREEN_ON"}) {
        AAFwk::Want want;
        want.SetAction(action);
        want.SetElement(AppExecFwk::ElementName("", "com.example.game", ""));
        subscriber.OnReceiveEvent(EventFwk::CommonEventData(want, 601, ""));
    }
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"E failed, empty action: , or invalid event handler"});
}
}  // namespace
}  // namespace Tarvo::Vantel
