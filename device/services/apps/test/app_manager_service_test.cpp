#include "app_manager_service.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>

#include "app_mgr_interface.h"
#include "application_state_observer_stub.h"
#include "ipc_skeleton.h"
#include "test_device_context.h"
#include "work_tracker.h"

namespace Tarvo::Emu::Test {
namespace {
using namespace AppExecFwk;

constexpr auto kQuiet = std::chrono::seconds(10);

// "bundle/pid/state/focus/uid from callerPid" per call received.
class RecordingObserver : public ApplicationStateObserverStub {
public:
    void OnForegroundApplicationChanged(const AppStateData& d) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        seen_.push_back(d.bundleName + "/" + std::to_string(d.pid) + "/" + std::to_string(d.state) + "/" +
                        std::to_string(d.isFocused) + "/" + std::to_string(d.uid) + " from " +
                        std::to_string(IPCSkeleton::GetCallingPid()));
    }
    std::vector<std::string> Seen()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return seen_;
    }

private:
    std::mutex mutex_;
    std::vector<std::string> seen_;
};

class CountingRecipient : public IRemoteObject::DeathRecipient {
public:
    void OnRemoteDied(const wptr<IRemoteObject>&) override { ++deaths; }
    std::atomic<int> deaths{0};
};

class AppManagerServiceTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(ctx_.Catalog().Install({"com.game", 20020000, true, false, std::nullopt}, nullptr));
        ASSERT_TRUE(ctx_.Catalog().Install({"com.other", 0, false, false, std::nullopt}, nullptr));
        service_.Start();
    }
    void WaitQuiet() { ASSERT_TRUE(WorkTracker::GetInstance().WaitQuiet(kQuiet)); }

    // An observer made in `process`, registered there through the manager it obtains from samgr.
    sptr<RecordingObserver> RegisterFrom(const std::shared_ptr<VirtualProcess>& process,
                                         const std::vector<std::string>& filter, int32_t* result)
    {
        ScopedProcess scope(process);
        sptr<RecordingObserver> observer = new RecordingObserver();
        sptr<IAppMgr> manager = iface_cast<IAppMgr>(ctx_.Obtain(APP_MGR_SERVICE_ID, process));
        *result = manager != nullptr ? manager->RegisterApplicationStateObserver(observer, filter) : -1;
        return observer;
    }

    TestDeviceContext ctx_;
    AppManagerService service_{ctx_};
    std::shared_ptr<VirtualProcess> zel_ = ctx_.MakeServiceProcess("zel_manager");
};

TEST_F(AppManagerServiceTest, ObserversOfOtherProcessesGetEachStateTheirFilterAdmits)
{
    int32_t result = -1;
    sptr<RecordingObserver> all = RegisterFrom(zel_, {}, &result);
    EXPECT_EQ(result, 0);
    sptr<RecordingObserver> filtered = RegisterFrom(ctx_.AppProcess("com.other"), {"com.other"}, &result);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(service_.ObserverCount(), 2u);

    EXPECT_TRUE(service_.NotifyAppState("com.game", 4321, 2, true));
    EXPECT_TRUE(service_.NotifyAppState("com.unknown", 7, 4, false));
    WaitQuiet();
    std::string manager = std::to_string(service_.Process()->Pid());
    EXPECT_EQ(all->Seen(), (std::vector<std::string>{"com.game/4321/2/1/20020000 from " + manager,
                                                     "com.unknown/7/4/0/0 from " + manager}));
    EXPECT_TRUE(filtered->Seen().empty());

    ScopedProcess scope(zel_);
    sptr<IAppMgr> proxy = iface_cast<IAppMgr>(ctx_.Obtain(APP_MGR_SERVICE_ID, zel_));
    ASSERT_NE(proxy, nullptr);
    EXPECT_EQ(proxy->UnregisterApplicationStateObserver(all), 0);
    EXPECT_NE(proxy->UnregisterApplicationStateObserver(all), 0);
    EXPECT_NE(proxy->RegisterApplicationStateObserver(nullptr), 0);
    EXPECT_EQ(service_.ObserverCount(), 1u);
    service_.NotifyAppState("com.game", 4321, 4, false);
    WaitQuiet();
    EXPECT_EQ(all->Seen().size(), 2u);
}

TEST_F(AppManagerServiceTest, AnObserverWhoseProcessDiesIsDropped)
{
    std::shared_ptr<VirtualProcess> app = ctx_.AppProcess("com.game");
    int32_t result = -1;
    sptr<RecordingObserver> observer = RegisterFrom(app, {}, &result);
    ASSERT_EQ(result, 0);
    app->Kill();
    WaitQuiet();
    EXPECT_EQ(service_.ObserverCount(), 0u);
    EXPECT_TRUE(service_.NotifyAppState("com.game", 1, 2, true));
    WaitQuiet();
    EXPECT_TRUE(observer->Seen().empty());
}

TEST_F(AppManagerServiceTest, RestartTellsHoldersAndPublishesAFreshManagerThatKnowsNoObservers)
{
    int32_t result = -1;
    sptr<RecordingObserver> observer = RegisterFrom(zel_, {}, &result);
    ASSERT_EQ(result, 0);
    sptr<IRemoteObject> old = ctx_.Obtain(APP_MGR_SERVICE_ID, zel_);
    sptr<CountingRecipient> recipient = new CountingRecipient();
    ASSERT_TRUE(old->AddDeathRecipient(recipient));
    int32_t oldPid = service_.Process()->Pid();

    service_.Restart();
    WaitQuiet();
    EXPECT_EQ(recipient->deaths, 1);
    EXPECT_TRUE(old->IsObjectDead());
    EXPECT_NE(service_.Process()->Pid(), oldPid);
    EXPECT_EQ(service_.ObserverCount(), 0u);

    sptr<IRemoteObject> fresh = ctx_.Obtain(APP_MGR_SERVICE_ID, zel_);
    ASSERT_NE(fresh, nullptr);
    EXPECT_FALSE(fresh->IsObjectDead());
    EXPECT_NE(fresh, old);
    sptr<RecordingObserver> again = RegisterFrom(zel_, {}, &result);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(service_.ObserverCount(), 1u);
    service_.NotifyAppState("com.game", 9, 2, true);
    WaitQuiet();
    EXPECT_TRUE(observer->Seen().empty());
    EXPECT_EQ(again->Seen().size(), 1u);
}

}  // namespace
}  // namespace Tarvo::Emu::Test
