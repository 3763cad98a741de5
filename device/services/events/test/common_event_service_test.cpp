#include "common_event_service.h"

#include <gtest/gtest.h>

#include "common_event_manager.h"
#include "common_event_support.h"
#include "test_device_context.h"

namespace Tarvo::Emu {
namespace {

using EventFwk::CommonEventData;
using EventFwk::CommonEventManager;
using EventFwk::CommonEventSubscribeInfo;
using EventFwk::CommonEventSupport;
using Test::TestDeviceContext;

constexpr auto kQuiet = std::chrono::seconds(10);

struct Received {
    std::string action;
    std::string bundle;
    int32_t code = 0;
    std::shared_ptr<VirtualProcess> process;
};

class RecordingSubscriber : public EventFwk::CommonEventSubscriber {
public:
    explicit RecordingSubscriber(const std::vector<std::string>& events) : CommonEventSubscriber(MakeInfo(events)) {}

    void OnReceiveEvent(const CommonEventData& data) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        received_.push_back({data.GetWant().GetAction(), data.GetWant().GetElement().GetBundleName(), data.GetCode(),
                             VirtualProcess::Current()});
    }

    std::vector<Received> Events()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

private:
    static CommonEventSubscribeInfo MakeInfo(const std::vector<std::string>& events)
    {
        EventFwk::MatchingSkills skills;
        for (const auto& event : events) {
            skills.AddEvent(event);
        }
        CommonEventSubscribeInfo info(skills);
        info.SetThreadMode(CommonEventSubscribeInfo::COMMON);
        return info;
    }

    std::mutex mutex_;
    std::vector<Received> received_;
};

class CommonEventServiceTest : public testing::Test {
protected:
    bool SubscribeIn(const std::shared_ptr<VirtualProcess>& process,
                     const std::shared_ptr<EventFwk::CommonEventSubscriber>& subscriber)
    {
        ScopedProcess scope(process);
        return CommonEventManager::SubscribeCommonEvent(subscriber);
    }

    bool PublishFrom(const std::shared_ptr<VirtualProcess>& process, const std::string& action,
                     const std::string& bundle, int32_t code)
    {
        ScopedProcess scope(process);
        AAFwk::Want want;
        want.SetAction(action).SetBundle(bundle);
        return CommonEventManager::PublishCommonEvent(CommonEventData(want, code, ""));
    }

    TestDeviceContext ctx_;
    CommonEventService service_{ctx_};
    std::shared_ptr<VirtualProcess> subscriberProcess_ = ctx_.MakeClientProcess("subscriber");
    std::shared_ptr<VirtualProcess> publisherProcess_ = ctx_.MakeClientProcess("publisher");
};

TEST_F(CommonEventServiceTest, MatchingEventsReachTheSubscriberOnItsOwnProcess)
{
    service_.Start();
    auto subscriber = std::make_shared<RecordingSubscriber>(std::vector<std::string>{
        CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED});
    ASSERT_TRUE(SubscribeIn(subscriberProcess_, subscriber));
    EXPECT_FALSE(SubscribeIn(subscriberProcess_, subscriber));
    EXPECT_EQ(service_.SubscriptionCount(), 1u);

    EXPECT_TRUE(PublishFrom(publisherProcess_, CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, "com.a.game", 0));
    EXPECT_TRUE(PublishFrom(publisherProcess_, CommonEventSupport::COMMON_EVENT_PACKAGE_REMOVED, "com.a.game", 0));
    EXPECT_TRUE(service_.Publish(CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED, std::nullopt, 603));
    EXPECT_TRUE(service_.Publish("usual.event.OTHER", "com.b", 1));
    EXPECT_FALSE(service_.Publish("", std::nullopt, std::nullopt));
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));

    std::vector<Received> events = subscriber->Events();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].action, CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED);
    EXPECT_EQ(events[0].bundle, "com.a.game");
    EXPECT_EQ(events[1].action, CommonEventSupport::COMMON_EVENT_POWER_SAVE_MODE_CHANGED);
    EXPECT_EQ(events[1].bundle, "");
    EXPECT_EQ(events[1].code, 603);
    for (const Received& event : events) {
        EXPECT_EQ(event.process, subscriberProcess_);
    }
}

TEST_F(CommonEventServiceTest, UnsubscribedSubscribersHearNothingAndUnknownOnesAreRefused)
{
    service_.Start();
    auto subscriber =
        std::make_shared<RecordingSubscriber>(std::vector<std::string>{CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED});
    auto stranger = std::make_shared<RecordingSubscriber>(std::vector<std::string>{"usual.event.OTHER"});
    ASSERT_TRUE(SubscribeIn(subscriberProcess_, subscriber));
    EXPECT_FALSE(CommonEventManager::UnSubscribeCommonEvent(stranger));
    EXPECT_FALSE(CommonEventManager::UnSubscribeCommonEvent(nullptr));

    EXPECT_TRUE(CommonEventManager::UnSubscribeCommonEvent(subscriber));
    EXPECT_FALSE(CommonEventManager::UnSubscribeCommonEvent(subscriber));
    EXPECT_EQ(service_.SubscriptionCount(), 0u);
    EXPECT_TRUE(service_.Publish(CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, "com.a", std::nullopt));
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));
    EXPECT_TRUE(subscriber->Events().empty());

    // A subscriber whose process died is dropped at the next event.
    ASSERT_TRUE(SubscribeIn(subscriberProcess_, subscriber));
    subscriberProcess_->Kill();
    EXPECT_TRUE(service_.Publish(CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, "com.a", std::nullopt));
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));
    EXPECT_EQ(service_.SubscriptionCount(), 0u);
    EXPECT_TRUE(subscriber->Events().empty());
}

TEST_F(CommonEventServiceTest, NothingSucceedsWhileTheServiceIsUnreachable)
{
    auto subscriber =
        std::make_shared<RecordingSubscriber>(std::vector<std::string>{CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED});
    EXPECT_FALSE(SubscribeIn(subscriberProcess_, subscriber));
    EXPECT_FALSE(CommonEventManager::UnSubscribeCommonEvent(subscriber));
    EXPECT_FALSE(PublishFrom(publisherProcess_, CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, "com.a", 0));
    EXPECT_FALSE(service_.Publish(CommonEventSupport::COMMON_EVENT_PACKAGE_ADDED, "com.a", std::nullopt));

    // Once it is there, the failed attempt left nothing behind.
    service_.Start();
    EXPECT_TRUE(SubscribeIn(subscriberProcess_, subscriber));
}

}  // namespace
}  // namespace Tarvo::Emu
