#include "common_event_manager.h"

#include <gtest/gtest.h>

#include <mutex>

#include "common_event_service_stub.h"
#include "i_common_event_listener.h"
#include "ipc_types.h"
#include "platform_test_support.h"

namespace Tarvo::EventFwk {
namespace {
using Test::MakeProcess;

constexpr auto kQuiet = std::chrono::seconds(10);

// Records what reaches the service and answers with a chosen result.
class FakeService : public CommonEventServiceStub {
public:
    int32_t Subscribe(const std::vector<std::string>& events, const sptr<IRemoteObject>& listener) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        subscribed = events;
        this->listener = listener;
        return result;
    }
    int32_t Unsubscribe(const sptr<IRemoteObject>& listener) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        unsubscribed = listener;
        return result;
    }
    int32_t Publish(const CommonEventData& data) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        published.push_back(data);
        return result;
    }

    std::mutex mutex;
    int32_t result = RESULT_OK;
    std::vector<std::string> subscribed;
    sptr<IRemoteObject> listener;
    sptr<IRemoteObject> unsubscribed;
    std::vector<CommonEventData> published;
};

class Recorder : public CommonEventSubscriber {
public:
    using CommonEventSubscriber::CommonEventSubscriber;
    void OnReceiveEvent(const CommonEventData& data) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        received.emplace_back(data, VirtualProcess::Current());
    }
    std::mutex mutex;
    std::vector<std::pair<CommonEventData, std::shared_ptr<VirtualProcess>>> received;
};

CommonEventData Event(const std::string& action, const std::string& bundle, int32_t code)
{
    AAFwk::Want want;
    want.SetAction(action).SetBundle(bundle);
    return CommonEventData(want, code, "");
}

class CommonEventManagerTest : public testing::Test {
protected:
    sptr<FakeService> StartService()
    {
        return samgr_.AddAbility<FakeService>(COMMON_EVENT_SERVICE_ID, serviceProcess_);
    }

    std::shared_ptr<Recorder> MakeRecorder()
    {
        MatchingSkills skills;
        skills.AddEvent("usual.event.A");
        skills.AddEvent("usual.event.B");
        skills.AddEvent("usual.event.A");
        return std::make_shared<Recorder>(CommonEventSubscribeInfo(skills));
    }

    std::shared_ptr<VirtualProcess> serviceProcess_ = MakeProcess(20, "service");
    std::shared_ptr<VirtualProcess> appProcess_ = MakeProcess(30, "app");
    Tarvo::Test::ScopedServiceManager samgr_;
};

TEST_F(CommonEventManagerTest, EventDataTravelsInItsDocumentedLayout)
{
    Parcel parcel;
    ASSERT_TRUE(Event("a", "b", 7).Marshalling(parcel));
    const std::vector<uint8_t> expected = {
        1, 0, 0, 0, 'a', 0, 0, 0,  // action
        0, 0, 0, 0, 0,   0, 0, 0,  // device id
        1, 0, 0, 0, 'b', 0, 0, 0,  // bundle name
        0, 0, 0, 0, 0,   0, 0, 0,  // ability name
        7, 0, 0, 0,                // code
        0, 0, 0, 0, 0,   0, 0, 0,  // data
    };
    EXPECT_EQ(std::vector<uint8_t>(parcel.GetData(), parcel.GetData() + parcel.GetDataSize()), expected);

    CommonEventData read;
    EXPECT_TRUE(CommonEventData::Unmarshalling(parcel, read));
    EXPECT_EQ(read, Event("a", "b", 7));
    Parcel truncated(expected.data(), expected.size() - 4);
    EXPECT_FALSE(CommonEventData::Unmarshalling(truncated, read));
    EXPECT_EQ(truncated.GetReadPosition(), 0u);
}

TEST_F(CommonEventManagerTest, SubscribingHandsTheServiceAListenerOfTheSubscribersProcess)
{
    sptr<FakeService> service = StartService();
    auto recorder = MakeRecorder();
    {
        ScopedProcess scope(appProcess_);
        ASSERT_TRUE(CommonEventManager::SubscribeCommonEvent(recorder));
        EXPECT_FALSE(CommonEventManager::SubscribeCommonEvent(recorder));
    }
    EXPECT_EQ(service->subscribed, (std::vector<std::string>{"usual.event.A", "usual.event.B"}));
    ASSERT_NE(service->listener, nullptr);
    EXPECT_TRUE(service->listener->IsProxyObject());

    {
        ScopedProcess scope(serviceProcess_);
        sptr<ICommonEventListener> listener = iface_cast<ICommonEventListener>(service->listener);
        ASSERT_NE(listener, nullptr);
        EXPECT_EQ(listener->NotifyEvent(Event("usual.event.B", "com.x", 3)), ERR_NONE);
    }
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));
    ASSERT_EQ(recorder->received.size(), 1u);
    EXPECT_EQ(recorder->received[0].first, Event("usual.event.B", "com.x", 3));
    EXPECT_EQ(recorder->received[0].second, appProcess_);

    // Unsubscribing names the same listener; afterwards nothing more gets through.
    EXPECT_TRUE(CommonEventManager::UnSubscribeCommonEvent(recorder));
    EXPECT_EQ(service->unsubscribed, service->listener);
    {
        ScopedProcess scope(serviceProcess_);
        iface_cast<ICommonEventListener>(service->listener)->NotifyEvent(Event("usual.event.A", "", 0));
    }
    ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet));
    EXPECT_EQ(recorder->received.size(), 1u);
}

TEST_F(CommonEventManagerTest, FailuresOfTheServiceReadAsFalse)
{
    auto recorder = MakeRecorder();
    EXPECT_FALSE(CommonEventManager::SubscribeCommonEvent(recorder));
    EXPECT_FALSE(CommonEventManager::PublishCommonEvent(Event("usual.event.A", "", 0)));
    EXPECT_FALSE(CommonEventManager::SubscribeCommonEvent(std::make_shared<Recorder>(CommonEventSubscribeInfo())));

    sptr<FakeService> service = StartService();
    service->result = ICommonEventService::RESULT_INVALID_ARGUMENT;
    EXPECT_FALSE(CommonEventManager::SubscribeCommonEvent(recorder));
    EXPECT_FALSE(CommonEventManager::UnSubscribeCommonEvent(recorder));
    EXPECT_FALSE(CommonEventManager::PublishCommonEvent(Event("usual.event.A", "", 0)));
    EXPECT_FALSE(CommonEventManager::PublishCommonEvent(Event("", "", 0)));
    EXPECT_EQ(service->published.size(), 1u);

    // A request without the interface token never reaches the implementation.
    MessageParcel data;
    MessageParcel reply;
    MessageOption option;
    ASSERT_TRUE(Event("usual.event.A", "", 0).Marshalling(data));
    EXPECT_EQ(service->SendRequest(ICommonEventService::PUBLISH, data, reply, option), ERR_INVALID_VALUE);
    EXPECT_EQ(service->published.size(), 1u);
}

}  // namespace
}  // namespace Tarvo::EventFwk
