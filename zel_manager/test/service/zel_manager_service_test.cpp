// The service as the host runs it: the built library loaded into a host process and started.
// Start-up, requests and their callers are played by the example scenarios; here is what only
// the host and the platform services see: registration, the subscription's contents and stop.
#include <gtest/gtest.h>

#include <mutex>

#include "hilog.h"
#include "ipc_object_stub.h"
#include "platform_test_support.h"
#include "service_host.h"
#include "virtual_clock.h"
#include "zel_test_processes.h"

namespace Tarvo::Vantel::Test {
namespace {
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_INFO;

// A platform service that answers every request with 0 and keeps each request's code and the
// string list it carried first.
class AnsweringService : public IPCObjectStub {
public:
    explicit AnsweringService(std::u16string descriptor) : IPCObjectStub(std::move(descriptor)) {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption&) override
    {
        data.ReadInterfaceToken();
        std::vector<std::string> strings;
        data.ReadStringVector(&strings);
        std::lock_guard<std::mutex> lock(mutex_);
        requests_.emplace_back(code, strings);
        reply.WriteInt32(0);
        return 0;
    }
    std::vector<std::pair<uint32_t, std::vector<std::string>>> Requests()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return requests_;
    }

private:
    std::mutex mutex_;
    std::vector<std::pair<uint32_t, std::vector<std::string>>> requests_;
};

class ZelManagerServiceTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();
        std::string error;
        ASSERT_TRUE(host_.LoadLibrary(ZEL_SERVICE_LIBRARY, &error)) << error;
    }

    HiviewDFX::LogCapture log_;
    std::shared_ptr<VirtualProcess> platformProcess_ = MakeCaller(CallerKind::NATIVE, 11);
    ServiceHost host_{MakeCaller(CallerKind::NATIVE, 1000)};
    Tarvo::Test::ScopedServiceManager samgr_{MakeCaller(CallerKind::NATIVE, 10)};
};

TEST_F(ZelManagerServiceTest, TheLibraryRegistersTheServiceWhichStopsEvenBeforeStartUp)
{
    ASSERT_EQ(host_.Abilities().size(), 1u);
    SystemAbility* service = host_.FindAbility(65958);
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(service->GetClassName(), "ZelManagerService");
    EXPECT_TRUE(service->IsRunOnCreate());
    EXPECT_EQ(log_.Lines(), std::vector<std::string>{"I ZelManagerService init"});

    host_.StartAbilities();
    host_.StopAbilities();
    EXPECT_EQ(log_.Messages(LOG_INFO), (std::vector<std::string>{"ZelManagerService init", "ZelManagerService OnStart",
                                                                 "ZelManagerService OnStop"}));
    EXPECT_TRUE(log_.Messages(LOG_ERROR).empty());
}

TEST_F(ZelManagerServiceTest, StartUpRegistersTheObserverAndSubscribesThreeEventsWhichStopUndoes)
{
    auto appMgr = samgr_.AddAbility<AnsweringService>(501, platformProcess_, u"tarvo.appexecfwk.AppMgr");
    samgr_.AddAbility<IPCObjectStub>(4607, platformProcess_, u"platform.Ability");
    auto events = samgr_.AddAbility<AnsweringService>(3299, platformProcess_, u"tarvo.eventfwk.ICommonEventService");
    host_.StartAbilities();
    ASSERT_TRUE(VirtualClock::AdvanceTo(PlatformClock::time_point(std::chrono::milliseconds(2000))));
    ASSERT_TRUE(VirtualClock::WaitQuiet());

    ASSERT_EQ(appMgr->Requests().size(), 1u);
    EXPECT_EQ(appMgr->Requests()[0].first, 1u);
    ASSERT_EQ(events->Requests().size(), 1u);
    EXPECT_EQ(
        events->Requests()[0],
        (std::pair<uint32_t, std::vector<std::string>>{
            1, {"usual.event.PACKAGE_ADDED", "usual.event.PACKAGE_REMOVED", "usual.event.POWER_SAVE_MODE_CHANGED"}}));

    host_.StopAbilities();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    ASSERT_EQ(appMgr->Requests().size(), 2u);
    EXPECT_EQ(appMgr->Requests()[1].first, 2u);
    // Unsubscribed twice on purpose; the platform answers what it likes to the second.
    ASSERT_GE(events->Requests().size(), 2u);
    EXPECT_EQ(events->Requests()[1].first, 2u);
    EXPECT_EQ(log_.Messages(LOG_INFO).back(), "ZelManagerService OnStop");
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
