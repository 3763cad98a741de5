#include "render_service.h"

#include <gtest/gtest.h>

#include <atomic>

#include "if_system_ability_manager.h"
#include "ipc_transport.h"
#include "rs_interfaces.h"
#include "test_device_context.h"
#include "work_tracker.h"

namespace Tarvo::Emu::Test {
namespace {
using Vantel::RSInterfaces;

class RenderServiceTest : public testing::Test {
protected:
    void SetUp() override { service_.Start(); }

    TestDeviceContext device_{TestDeviceContext::Clock::VIRTUAL};
    RenderService service_{device_};
};

TEST_F(RenderServiceTest, NoticesFromAnotherProcessAreTracedInOrderWithTheirFields)
{
    {
        ScopedProcess scope(device_.MakeClientProcess("zel_manager"));
        RSInterfaces::GetInstance().NotifyPackageEvent(2, {"com.a:0:-1", "com.b"});
        RSInterfaces::GetInstance().NotifyRefreshRateEvent({"VOTER_SCENE", true, 0, 120, "BACK_APP_ANIMATION"});
        RSInterfaces::GetInstance().NotifyRefreshRateEvent({"VOTER_THERMAL", false, 30, 60, ""});
        RSInterfaces::GetInstance().NotifyLightFactorStatus(true);
        RSInterfaces::GetInstance().NotifyPackageEvent(0, {});
    }
    EXPECT_EQ(device_.TraceLines(),
              (std::vector<std::string>{
                  R"({"t":0,"ev":"mox.package","pkgs":["com.a:0:-1","com.b"]})",
                  R"({"t":0,"ev":"mox.refresh","name":"VOTER_SCENE","status":true,"min":0,"max":120,)"
                  R"("desc":"BACK_APP_ANIMATION"})",
                  R"({"t":0,"ev":"mox.refresh","name":"VOTER_THERMAL","status":false,"min":30,"max":60,"desc":""})",
                  R"({"t":0,"ev":"mox.light","status":true})",
                  R"({"t":0,"ev":"mox.package","pkgs":[]})",
              }));
}

TEST_F(RenderServiceTest, TheServiceIsLookedUpOnceAndAgainAfterItsProcessDied)
{
    std::atomic<int> lookups = 0;
    IPCTransport::Get().SetTransactionObserver([&lookups](const TransactionRecord& record) {
        lookups += record.descriptor == ISystemAbilityManager::GetDescriptor() &&
                   record.code == ISystemAbilityManager::GET_SYSTEM_ABILITY;
    });
    auto light = [](bool status) { RSInterfaces::GetInstance().NotifyLightFactorStatus(status); };
    auto quiet = [] { ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(std::chrono::seconds(10))); };
    std::shared_ptr<VirtualProcess> client = device_.MakeClientProcess("zel_manager");
    {
        ScopedProcess scope(client);
        light(true);
        light(false);
    }
    EXPECT_EQ(lookups, 1);
    device_.FindProcess("render_service")->Kill();
    quiet();
    {
        // The service manager still names the dead object: the notice is lost.
        ScopedProcess scope(client);
        light(true);
    }
    RenderService restarted{device_};
    restarted.Start();
    quiet();
    {
        ScopedProcess scope(client);
        light(false);
        light(true);
    }
    IPCTransport::Get().SetTransactionObserver(nullptr);
    EXPECT_EQ(lookups, 3);
    EXPECT_EQ(device_.TraceLines(), (std::vector<std::string>{
                                        R"({"t":0,"ev":"mox.light","status":true})",
                                        R"({"t":0,"ev":"mox.light","status":false})",
                                        R"({"t":0,"ev":"mox.light","status":false})",
                                        R"({"t":0,"ev":"mox.light","status":true})",
                                    }));
}

}  // namespace
}  // namespace Tarvo::Emu::Test
