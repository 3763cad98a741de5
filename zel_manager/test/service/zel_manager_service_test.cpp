// The service as the host runs it: the built library loaded into a host process, started, and
// reached by clients of other processes through the service manager.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace Tarvo::Vantel::Test
