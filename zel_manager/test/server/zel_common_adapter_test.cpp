// The adapter between frame-rate control and two platform services: the application manager,
// whose observer registration is retried and survives its restarts, and the display power
// manager's brightness callback.
#include "zel_common_adapter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "app_mgr_stub.h"
#include "hilog.h"
#include "ipc_object_stub.h"
#include "platform_test_support.h"
#include "virtual_clock.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_INFO;
using Tarvo::Test::MakeProcess;
using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

const std::string kRegisterFailed =
    "ZelCommonAdapter::RegisterAppStateObserver Failed to register the package name listener.";
const std::string kNoDeathRecipient = "ZelCommonAdapter::RegisterAppStateObserver AddDeathRecipient faild.";

// An application manager that answers registrations with a set result and counts them.
class FakeAppMgr : public AppExecFwk::AppMgrStub {
public:
    explicit FakeAppMgr(int32_t result) : result_(result) {}
    int32_t RegisterApplicationStateObserver(const sptr<AppExecFwk::IApplicationStateObserver>& observer,
                                             const std::vector<std::string>& bundleNameList) override
    {
        registered += observer != nullptr && bundleNameList.empty() ? 1 : 0;
        return result_;
    }
    int32_t UnregisterApplicationStateObserver(const sptr<AppExecFwk::IApplicationStateObserver>&) override
    {
        unregistered++;
        return 0;
    }
    std::atomic<int> registered{0};
    std::atomic<int> unregistered{0};

private:
    const int32_t result_;
};

// A display power manager that keeps each request as "code flags wait" and its parcel.
class FakeDisplayPowerMgr : public IPCObjectStub {
public:
    FakeDisplayPowerMgr() : IPCObjectStub(u"tarvo.displaypowermgr.IDisplayPowerMgr") {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        heads.push_back(std::to_string(code) + " " + std::to_string(option.GetFlags()) + " " +
                        std::to_string(option.GetWaitTime()));
        requests.push_back(data);
        reply.WriteInt32(0);
        return 0;
    }
    Strings heads;
    std::vector<MessageParcel> requests;
};

class ZelCommonAdapterTest : public testing::Test {
protected:
    void SetUp() override { VirtualClock::Install(); }

    static void Advance(std::chrono::milliseconds delta) { ASSERT_TRUE(VirtualClock::AdvanceBy(delta)); }
    sptr<FakeAppMgr> AppMgrUp(int32_t result)
    {
        appMgrProcess_ = MakeProcess(101, "appmgr");
        return samgr_.AddAbility<FakeAppMgr>(ZelCommonAdapter::APP_MGR_SERVICE_ID, appMgrProcess_, result);
    }
    // The callback object of a recorded registration, as this process sees it.
    static sptr<IRemoteObject> Sent(MessageParcel data)
    {
        std::vector<int32_t> thresholds;
        data.ReadInterfaceToken();
        data.ReadInt32Vector(&thresholds);
        return data.ReadRemoteObject();
    }

    HiviewDFX::LogCapture log_;
    Tarvo::Test::ScopedServiceManager samgr_{MakeProcess(10, "samgr")};
    std::shared_ptr<VirtualProcess> appMgrProcess_;
    std::shared_ptr<VirtualProcess> powerProcess_ = MakeProcess(20, "power");
    ZelCommonAdapter* adapter_ = ZelCommonAdapter::GetInstance();
};

// Each attempt that finds no application manager, or is refused, is retried 5 s later.
TEST_F(ZelCommonAdapterTest, ObserverRegistrationIsRetriedEveryFiveSecondsUntilItsBudgetIsSpent)
{
    adapter_->RegisterAppStateObserver(0);
    EXPECT_EQ(log_.Lines(), Strings{"E " + kRegisterFailed});
    log_.Clear();

    adapter_->RegisterAppStateObserver(3);
    Advance(4999ms);
    EXPECT_EQ(log_.Count(LOG_INFO, kNoDeathRecipient), 1u);
    Advance(1ms);
    EXPECT_EQ(log_.Count(LOG_INFO, kNoDeathRecipient), 2u);
    sptr<FakeAppMgr> appMgr = AppMgrUp(1);
    Advance(5000ms);  // the third and last attempt, refused
    EXPECT_EQ(appMgr->registered, 1);
    EXPECT_EQ(log_.Count(LOG_INFO, "register app result = 1"), 1u);
    EXPECT_FALSE(log_.Contains(LOG_ERROR, kRegisterFailed));
    Advance(35s);
    EXPECT_EQ(appMgr->registered, 1);
    EXPECT_EQ(log_.Messages(LOG_ERROR), Strings{kRegisterFailed});
}

// Accepted, the observer is registered once. Unregistering tells the live manager and forgets it:
// its death then goes unnoticed. (A restart re-registers: examples/scenarios/observers.scn.)
TEST_F(ZelCommonAdapterTest, UnregisteringTellsTheManagerAndIgnoresItsDeath)
{
    sptr<FakeAppMgr> appMgr = AppMgrUp(0);
    adapter_->RegisterAppStateObserver(3);
    Advance(30s);
    EXPECT_EQ(appMgr->registered, 1);
    adapter_->UnRegisterAppStateObserver();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(appMgr->unregistered, 1);
    appMgrProcess_->Kill();
    Advance(10s);
    EXPECT_EQ(log_.Lines(), Strings{"I register app result = 0"});
}

TEST_F(ZelCommonAdapterTest, BrightnessListenerNeedsThreeThresholdsAndTheDisplayPowerManager)
{
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    adapter_->RegisterBrightBrightnessListener();
    for (std::vector<int32_t> wrong : {std::vector<int32_t>{10, 20}, std::vector<int32_t>{10, 20, 30, 40}}) {
        numbers["ambientBrightnessThreshold"] = wrong;
        adapter_->RegisterBrightBrightnessListener();
    }
    numbers["ambientBrightnessThreshold"] = {10, 20, 30};
    adapter_->RegisterBrightBrightnessListener();
    samgr_.Uninstall();
    adapter_->RegisterBrightBrightnessListener();
    samgr_.Install();
    Strings expected(3,
                     "W ZelCommonAdapter RegisterBrightBrightnessListener ambient luminance configuration item "
                     "does not exist");
    const std::string noRemote = "E ZelCommonAdapter::RegisterBrightBrightnessListener Get RemoteObject faild.";
    expected.insert(expected.end(), {noRemote, "E ZelCommonAdapter::GetRemoteObject samgr is null", noRemote});
    EXPECT_EQ(log_.Lines(), expected);
    log_.Clear();

    // Registered again on every call, always with the same callback object.
    auto power = samgr_.AddAbility<FakeDisplayPowerMgr>(ZelCommonAdapter::DISPLAY_POWER_MANAGER_ID, powerProcess_);
    adapter_->RegisterBrightBrightnessListener();
    adapter_->RegisterBrightBrightnessListener();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    ASSERT_EQ(power->heads, (Strings{"21 0 8", "21 0 8"}));
    std::string payload = Tarvo::Test::HexAfterToken(power->requests[0], u"tarvo.displaypowermgr.IDisplayPowerMgr");
    EXPECT_EQ(payload.rfind("03 00 00 00 0A 00 00 00 14 00 00 00 1E 00 00 00 ", 0), 0u) << payload;
    ASSERT_NE(Sent(power->requests[0]), nullptr);
    EXPECT_EQ(Sent(power->requests[0]), Sent(power->requests[1]));

    // Type and state go on to frame-rate control only when both are there.
    log_.Clear();
    for (bool withType : {false, true}) {
        MessageParcel data;
        MessageParcel reply;
        if (withType) {
            data.WriteUint32(1);
        }
        adapter_->OnBrightnessChange(data, reply);
        EXPECT_EQ(reply.GetDataSize(), 0u);
    }
    EXPECT_EQ(log_.Lines(), (Strings{"E ZelCommonAdapter::OnBrightnessChange read type faild.",
                                     "E ZelCommonAdapter::OnBrightnessChange read state faild."}));
}

}  // namespace
}  // namespace Tarvo::Vantel
