// The adapter between frame-rate control and two platform services: the application manager,
// whose observer registration survives its restarts, and the display power manager's brightness
// callback.
#include "zel_common_adapter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>

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
using HiviewDFX::LOG_WARN;
using HiviewDFX::LogCapture;
using Tarvo::Test::MakeProcess;
using namespace std::chrono_literals;

constexpr const char* kRegisterFailed =
    "ZelCommonAdapter::RegisterAppStateObserver Failed to register the package name listener.";
constexpr const char* kNoDeathRecipient = "ZelCommonAdapter::RegisterAppStateObserver AddDeathRecipient faild.";
constexpr const char* kNoThresholds =
    "ZelCommonAdapter RegisterBrightBrightnessListener ambient luminance configuration item does not exist";

// An application manager that answers registrations with a set result and counts what it heard.
class FakeAppMgr : public AppExecFwk::AppMgrStub {
public:
    explicit FakeAppMgr(int32_t result) : result_(result) {}
    int32_t RegisterApplicationStateObserver(const sptr<AppExecFwk::IApplicationStateObserver>& observer,
                                             const std::vector<std::string>& bundleNameList) override
    {
        if (observer != nullptr && bundleNameList.empty()) {
            registered++;
        }
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

// A display power manager that keeps every request and answers with reply 0.
class FakeDisplayPowerMgr : public IPCObjectStub {
public:
    FakeDisplayPowerMgr() : IPCObjectStub(u"tarvo.displaypowermgr.IDisplayPowerMgr") {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        codes.push_back(code);
        flags.push_back(option.GetFlags());
        waitTimes.push_back(option.GetWaitTime());
        requests.push_back(data);
        reply.WriteInt32(0);
        return 0;
    }
    std::vector<uint32_t> codes;
    std::vector<int> flags;
    std::vector<int> waitTimes;
    std::vector<MessageParcel> requests;

private:
    std::mutex mutex_;
};

class ZelCommonAdapterTest : public testing::Test {
protected:
    void SetUp() override { VirtualClock::Install(); }

    static void Advance(std::chrono::milliseconds delta) { ASSERT_TRUE(VirtualClock::AdvanceBy(delta)); }

    sptr<FakeAppMgr> AppMgrUp(int32_t result)
    {
        appMgrProcess_ = MakeProcess(++nextPid_, "appmgr");
        return samgr_.AddAbility<FakeAppMgr>(501, appMgrProcess_, result);
    }

    // The remote object the adapter sent in the recorded registration, as this process sees it.
    static sptr<IRemoteObject> SentCallback(MessageParcel data)
    {
        data.ReadInterfaceToken();
        std::vector<int32_t> thresholds;
        data.ReadInt32Vector(&thresholds);
        return data.ReadRemoteObject();
    }

    static int SendBrightness(const sptr<IRemoteObject>& callback, bool withState)
    {
        MessageParcel data;
        MessageParcel reply;
        MessageOption option;
        data.WriteInterfaceToken(u"tarvo.powermgr.IDisplayBrightnessCallback");
        data.WriteUint32(1);
        if (withState) {
            data.WriteBool(true);
        }
        return callback->SendRequest(0, data, reply, option);
    }

    LogCapture log_;
    int32_t nextPid_ = 100;
    Tarvo::Test::ScopedServiceManager samgr_{MakeProcess(10, "samgr")};
    std::shared_ptr<VirtualProcess> appMgrProcess_;
    std::shared_ptr<VirtualProcess> powerProcess_ = MakeProcess(20, "power");
};

TEST_F(ZelCommonAdapterTest, RegistersTheObserverOnceWhenTheApplicationManagerAccepts)
{
    sptr<FakeAppMgr> appMgr = AppMgrUp(0);
    ZelCommonAdapter::GetInstance()->RegisterAppStateObserver(3);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(appMgr->registered, 1);
    EXPECT_EQ(log_.Messages(LOG_INFO), std::vector<std::string>{"register app result = 0"});

    Advance(30s);
    EXPECT_EQ(appMgr->registered, 1);
    EXPECT_TRUE(log_.Messages(LOG_ERROR).empty());
}

TEST_F(ZelCommonAdapterTest, RefusedOrUnreachableRegistrationRetriesEveryFiveSecondsThenGivesUp)
{
    ZelCommonAdapter::GetInstance()->RegisterAppStateObserver(0);
    EXPECT_EQ(log_.Lines(), std::vector<std::string>{std::string("E ") + kRegisterFailed});
    log_.Clear();

    // No application manager at all: every attempt ends before the registration.
    ZelCommonAdapter::GetInstance()->RegisterAppStateObserver(3);
    EXPECT_EQ(log_.Count(LOG_INFO, kNoDeathRecipient), 1u);
    Advance(4999ms);
    EXPECT_EQ(log_.Count(LOG_INFO, kNoDeathRecipient), 1u);
    Advance(1ms);
    EXPECT_EQ(log_.Count(LOG_INFO, kNoDeathRecipient), 2u);

    // It comes up, but refuses: the last of the three attempts is at 10 s, the end at 15 s.
    sptr<FakeAppMgr> appMgr = AppMgrUp(1);
    Advance(5000ms);
    EXPECT_EQ(appMgr->registered, 1);
    EXPECT_EQ(log_.Count(LOG_INFO, "register app result = 1"), 1u);
    EXPECT_FALSE(log_.Contains(LOG_ERROR, kRegisterFailed));
    Advance(5000ms);
    EXPECT_EQ(log_.Count(LOG_ERROR, kRegisterFailed), 1u);
    Advance(30s);
    EXPECT_EQ(appMgr->registered, 1);
    EXPECT_EQ(log_.Count(LOG_ERROR, kRegisterFailed), 1u);
}

TEST_F(ZelCommonAdapterTest, RestartedApplicationManagerGetsTheObserverAgain)
{
    sptr<FakeAppMgr> first = AppMgrUp(0);
    ZelCommonAdapter::GetInstance()->RegisterAppStateObserver(3);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    ASSERT_EQ(first->registered, 1);

    samgr_->RemoveSystemAbility(501);
    appMgrProcess_->Kill();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    // The notice arrives while nothing answers under 501: the retry chain of ten starts.
    EXPECT_EQ(log_.Count(LOG_INFO, kNoDeathRecipient), 1u);

    Advance(20s);
    EXPECT_EQ(log_.Count(LOG_INFO, kNoDeathRecipient), 5u);
    sptr<FakeAppMgr> second = AppMgrUp(0);
    Advance(5s);
    EXPECT_EQ(second->registered, 1);
    EXPECT_EQ(log_.Count(LOG_INFO, "register app result = 0"), 2u);
    Advance(60s);
    EXPECT_EQ(second->registered, 1);
    EXPECT_FALSE(log_.Contains(LOG_ERROR, kRegisterFailed));

    // Unregistering tells the live manager and forgets it: its death then goes unnoticed.
    ZelCommonAdapter::GetInstance()->UnRegisterAppStateObserver();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(second->unregistered, 1);
    log_.Clear();
    appMgrProcess_->Kill();
    Advance(10s);
    EXPECT_TRUE(log_.Lines().empty());
}

TEST_F(ZelCommonAdapterTest, BrightnessListenerIsRegisteredOnlyWithExactlyThreeThresholds)
{
    sptr<FakeDisplayPowerMgr> power = samgr_.AddAbility<FakeDisplayPowerMgr>(3308, powerProcess_);
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    numbers["ambientBrightnessThreshold"] = {10, 20};
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    numbers["ambientBrightnessThreshold"] = {10, 20, 30, 40};
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_TRUE(power->codes.empty());
    EXPECT_EQ(log_.Lines(), std::vector<std::string>(3, std::string("W ") + kNoThresholds));
    log_.Clear();

    numbers["ambientBrightnessThreshold"] = {10, 20, 30};
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    ASSERT_EQ(power->codes, (std::vector<uint32_t>{21, 21}));
    EXPECT_EQ(power->flags, (std::vector<int>{0, 0}));
    EXPECT_EQ(power->waitTimes, (std::vector<int>{8, 8}));
    std::string payload = Tarvo::Test::HexAfterToken(power->requests[0], u"tarvo.displaypowermgr.IDisplayPowerMgr");
    EXPECT_EQ(payload.rfind("03 00 00 00 0A 00 00 00 14 00 00 00 1E 00 00 00 ", 0), 0u) << payload;
    sptr<IRemoteObject> first = SentCallback(power->requests[0]);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, SentCallback(power->requests[1]));
    EXPECT_EQ(log_.Count(LOG_INFO, "ZelCommonAdapter::RegisterBrightBrightnessListener success, result = 0"), 2u);
}

TEST_F(ZelCommonAdapterTest, BrightnessRegistrationNeedsTheDisplayPowerManager)
{
    ZelManagerConfig::GetIntNumbersConfig()["ambientBrightnessThreshold"] = {10, 20, 30};
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    EXPECT_EQ(log_.Lines(),
              std::vector<std::string>{"E ZelCommonAdapter::RegisterBrightBrightnessListener Get RemoteObject faild."});

    log_.Clear();
    samgr_.Uninstall();
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    EXPECT_EQ(log_.Lines(), (std::vector<std::string>{
                                "E ZelCommonAdapter::GetRemoteObject samgr is null",
                                "E ZelCommonAdapter::RegisterBrightBrightnessListener Get RemoteObject faild."}));
    samgr_.Install();
}

TEST_F(ZelCommonAdapterTest, BrightnessCallbackPassesTypeAndStateOnlyWhenBothAreThere)
{
    sptr<FakeDisplayPowerMgr> power = samgr_.AddAbility<FakeDisplayPowerMgr>(3308, powerProcess_);
    ZelManagerConfig::GetIntNumbersConfig()["ambientBrightnessThreshold"] = {10, 20, 30};
    ZelCommonAdapter::GetInstance()->RegisterBrightBrightnessListener();
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    ASSERT_EQ(power->requests.size(), 1u);
    sptr<IRemoteObject> callback = SentCallback(power->requests[0]);
    ASSERT_NE(callback, nullptr);
    log_.Clear();

    EXPECT_EQ(SendBrightness(callback, false), 0);
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              std::vector<std::string>{"ZelCommonAdapter::OnBrightnessChange read state faild."});
    EXPECT_TRUE(log_.Messages(LOG_INFO).empty());

    log_.Clear();
    EXPECT_EQ(SendBrightness(callback, true), 0);
    EXPECT_TRUE(log_.Contains(LOG_INFO, "FrameRateControl  NotifyLightState type = 1, state = 1"));
    EXPECT_TRUE(log_.Messages(LOG_ERROR).empty());

    MessageParcel empty;
    MessageParcel reply;
    ZelCommonAdapter::GetInstance()->OnBrightnessChange(empty, reply);
    EXPECT_TRUE(log_.Contains(LOG_ERROR, "ZelCommonAdapter::OnBrightnessChange read type faild."));
    EXPECT_EQ(reply.GetDataSize(), 0u);
}

}  // namespace
}  // namespace Tarvo::Vantel
