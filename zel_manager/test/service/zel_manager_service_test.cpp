// The service as the host runs it: the built library loaded into a host process, started, and
// reached by clients of other processes through the service manager.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

#include "hilog.h"
#include "ipc_driver.h"
#include "ipc_object_stub.h"
#include "iservice_registry.h"
#include "platform_test_support.h"
#include "service_host.h"
#include "virtual_clock.h"
#include "zel_manager_proxy.h"
#include "zel_test_processes.h"

namespace Tarvo::Vantel::Test {
namespace {
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_INFO;
using HiviewDFX::LogCapture;

constexpr const char* kWaiting = "request system service object is not ready yet!";

class ZelManagerServiceTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();
        std::string error;
        ASSERT_TRUE(host_.LoadLibrary(ZEL_SERVICE_LIBRARY, &error)) << error;
    }

    void RunUntil(int64_t ms)
    {
        ASSERT_TRUE(VirtualClock::AdvanceTo(PlatformClock::time_point(PlatformClock::duration(ms))));
    }

    // A platform ability (501 application manager, 4607 display manager) comes up.
    void AbilityUp(int32_t id) { samgr_.AddAbility<IPCObjectStub>(id, platformProcess_, u"platform.Ability"); }

    sptr<IZelManager> ServiceFrom(const std::shared_ptr<VirtualProcess>& process)
    {
        ScopedProcess scope(process);
        auto manager = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
        return manager != nullptr ? iface_cast<IZelManager>(manager->GetSystemAbility(65958)) : nullptr;
    }

    LogCapture log_;
    std::shared_ptr<VirtualProcess> platformProcess_ = MakeCaller(CallerKind::NATIVE, 11);
    ServiceHost host_{MakeCaller(CallerKind::NATIVE, 1000)};
    Tarvo::Test::ScopedServiceManager samgr_{MakeCaller(CallerKind::NATIVE, 10)};
};

TEST_F(ZelManagerServiceTest, TheLibraryRegistersTheServiceWhichPublishesAtOnceOnStart)
{
    ASSERT_EQ(host_.Abilities().size(), 1u);
    SystemAbility* service = host_.FindAbility(65958);
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(service->GetClassName(), "ZelManagerService");
    EXPECT_TRUE(service->IsRunOnCreate());
    EXPECT_EQ(log_.Lines(), std::vector<std::string>{"I ZelManagerService init"});

    host_.StartAbilities();
    EXPECT_TRUE(log_.Contains(LOG_INFO, "ZelManagerService OnStart"));
    // No virtual time has passed: publication does not wait for start-up.
    auto client = MakeCaller(CallerKind::NATIVE, 2000);
    sptr<IZelManager> manager = ServiceFrom(client);
    ASSERT_NE(manager, nullptr);
    EXPECT_NE(dynamic_cast<ZelManagerProxy*>(manager.GetRefPtr()), nullptr);

    ScopedProcess scope(client);
    EXPECT_EQ(manager->ChangeResolutionMode(2, 0), 0);
    EXPECT_TRUE(log_.Contains(LOG_INFO, "call ChangeResolutionMode success, mode = 2, flag=0"));
    EXPECT_EQ(manager->SetThermalPolicy({{100, 5}, {102, 7}}), 1u);
    EXPECT_TRUE(log_.Contains(LOG_INFO, "ZelManagerService SetThermalPolicy recv map"));

    host_.StopAbilities();
    EXPECT_TRUE(log_.Contains(LOG_INFO, "ZelManagerService OnStop"));
}

TEST_F(ZelManagerServiceTest, StartUpWaitsEveryTwoSecondsUntilTheRequiredAbilitiesAreObtainable)
{
    host_.StartAbilities();
    RunUntil(1999);
    EXPECT_EQ(log_.Count(LOG_INFO, kWaiting), 0u);
    RunUntil(2000);
    EXPECT_EQ(log_.Count(LOG_INFO, kWaiting), 1u);
    AbilityUp(501);  // 4607 still missing
    RunUntil(5999);
    EXPECT_EQ(log_.Count(LOG_INFO, kWaiting), 2u);
    RunUntil(6000);
    EXPECT_EQ(log_.Count(LOG_INFO, kWaiting), 3u);
    AbilityUp(4607);
    RunUntil(8000);
    RunUntil(20000);
    EXPECT_EQ(log_.Count(LOG_INFO, kWaiting), 3u);  // proceeded at 8000 and stopped retrying
}

TEST_F(ZelManagerServiceTest, StartUpWaitsForTheServiceManagerItself)
{
    host_.StartAbilities();  // published while the service manager was there
    AbilityUp(501);
    AbilityUp(4607);
    samgr_.Uninstall();
    RunUntil(6000);
    EXPECT_EQ(log_.Count(LOG_INFO, "GetSystemAbilityManager fail!"), 3u);
    samgr_.Install();
    RunUntil(20000);
    EXPECT_EQ(log_.Count(LOG_INFO, "GetSystemAbilityManager fail!"), 3u);
    EXPECT_EQ(log_.Count(LOG_INFO, kWaiting), 0u);
}

TEST_F(ZelManagerServiceTest, ASceneFromAnotherProcessIsAcceptedOnlyFromASystemCaller)
{
    host_.StartAbilities();
    struct Done {
        uint64_t tag;
        int status;
        int32_t callerPid;
    };
    std::mutex mutex;
    std::vector<Done> done;
    IPCDriver::GetInstance().SetTransactionObserver([&](const IPCDriver::TransactionRecord& record) {
        std::lock_guard<std::mutex> lock(mutex);
        done.push_back({record.tag, record.status, record.callerPid});
    });
    int tag = 0;
    for (CallerKind kind : {CallerKind::SYSTEM_APP, CallerKind::ORDINARY_APP}) {
        auto caller = MakeCaller(kind, 3001 + tag);
        sptr<IZelManager> manager = ServiceFrom(caller);
        ASSERT_NE(manager, nullptr);
        ScopedProcess scope(caller);
        IPCDriver::ScopedTag scopedTag(++tag);
        manager->SetScene("com.tarvo.vistadeck", "BACK_DESKTOP", 1);
    }
    ASSERT_TRUE(VirtualClock::WaitQuiet(std::chrono::seconds(10)));
    IPCDriver::GetInstance().SetTransactionObserver(nullptr);

    std::vector<std::pair<int, int32_t>> oneWay;  // status and caller of the two scene requests
    for (const Done& d : done) {
        if (d.tag != 0) {
            oneWay.emplace_back(d.status, d.callerPid);
        }
    }
    EXPECT_EQ(oneWay, (std::vector<std::pair<int, int32_t>>{{0, 3001}, {3, 3002}}));
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              std::vector<std::string>{"[ZelManagerStub::SetSceneStub] permission verification failed."});
}

// A platform service that answers every request with result 0 and keeps the codes it got, and
// the string list each request carried first.
class AnsweringService : public IPCObjectStub {
public:
    explicit AnsweringService(std::u16string descriptor) : IPCObjectStub(std::move(descriptor)) {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption&) override
    {
        data.ReadInterfaceToken();
        std::vector<std::string> strings;
        data.ReadStringVector(&strings);
        std::lock_guard<std::mutex> lock(mutex_);
        codes_.push_back(code);
        strings_.push_back(strings);
        reply.WriteInt32(0);
        return 0;
    }
    std::vector<uint32_t> Codes()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return codes_;
    }
    std::vector<std::vector<std::string>> Strings()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return strings_;
    }

private:
    std::mutex mutex_;
    std::vector<uint32_t> codes_;
    std::vector<std::vector<std::string>> strings_;
};

TEST_F(ZelManagerServiceTest, StartUpRegistersTheObserverFirstAndSubscribesTheEventsLastUntilStop)
{
    sptr<AnsweringService> appMgr =
        samgr_.AddAbility<AnsweringService>(501, platformProcess_, u"tarvo.appexecfwk.AppMgr");
    AbilityUp(4607);
    sptr<AnsweringService> events =
        samgr_.AddAbility<AnsweringService>(3299, platformProcess_, u"tarvo.eventfwk.ICommonEventService");
    host_.StartAbilities();
    RunUntil(2000);
    ASSERT_TRUE(VirtualClock::WaitQuiet());

    EXPECT_EQ(appMgr->Codes(), std::vector<uint32_t>{1});
    ASSERT_EQ(events->Codes(), std::vector<uint32_t>{1});
    EXPECT_EQ(events->Strings()[0],
              (std::vector<std::string>{"usual.event.PACKAGE_ADDED", "usual.event.PACKAGE_REMOVED",
                                        "usual.event.POWER_SAVE_MODE_CHANGED"}));
    std::vector<std::string> info = log_.Messages(LOG_INFO);
    auto registered = std::find(info.begin(), info.end(), "register app result = 0");
    auto subscribed = std::find(info.begin(), info.end(), "subscribeCommonEvent subscribed success.");
    ASSERT_NE(registered, info.end());
    ASSERT_NE(subscribed, info.end());
    EXPECT_LT(registered, subscribed);

    host_.StopAbilities();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(appMgr->Codes(), (std::vector<uint32_t>{1, 2}));
    std::vector<uint32_t> eventCodes = events->Codes();
    ASSERT_GE(eventCodes.size(), 2u);
    EXPECT_EQ(eventCodes[1], 2u);
    EXPECT_EQ(log_.Messages(LOG_INFO).back(), "ZelManagerService OnStop");
}

TEST_F(ZelManagerServiceTest, AFailedSubscriptionIsLoggedOnceAndNotRetried)
{
    AbilityUp(501);
    AbilityUp(4607);
    host_.StartAbilities();
    RunUntil(2000);
    EXPECT_EQ(log_.Count(LOG_ERROR, "subscribeCommonEvent subscribed failure."), 1u);
    RunUntil(60000);
    EXPECT_EQ(log_.Count(LOG_ERROR, "subscribeCommonEvent subscribed failure."), 1u);
    EXPECT_FALSE(log_.Contains(LOG_INFO, "subscribeCommonEvent subscribed success."));
}

TEST_F(ZelManagerServiceTest, StopWithoutStartUpStillLogs)
{
    host_.StartAbilities();
    host_.StopAbilities();
    EXPECT_EQ(log_.Messages(LOG_INFO).back(), "ZelManagerService OnStop");
    EXPECT_TRUE(log_.Messages(LOG_ERROR).empty());
}

}  // namespace
}  // namespace Tarvo::Vantel::Test
