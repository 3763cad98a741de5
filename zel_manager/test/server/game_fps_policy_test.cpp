// The game listener registry in the cases a device cannot stage: the switch, arguments the
// service never passes, the bound settings, callbacks in the service's own process, and stale
// retries. Registration, targets, bounds, classification and retries across processes are played
// in examples/scenarios/game_*.scn.
#include "game_fps_policy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "app_category_info.h"
#include "app_category_interface.h"
#include "hilog.h"
#include "ipc_object_stub.h"
#include "platform_test_support.h"
#include "virtual_clock.h"
#include "zel_callback_stub.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
using HiviewDFX::LOG_DEBUG;
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_INFO;
using HiviewDFX::LOG_WARN;
using Fps = std::vector<uint32_t>;
using Strings = std::vector<std::string>;

const std::string kNotEnabled =
    "GameFpsPolicy RegisterGameFpsListener] The solution is not enabled,Check configuration file.";
const std::string kNothingRemoved = "GameFpsPolicy::RemoveCallback no callback remove.";

// The app-category service: alpha and beta are games, notes is not. Answers what it is asked,
// or everything for an empty list.
class FakeCategoryService : public IPCObjectStub {
public:
    FakeCategoryService() : IPCObjectStub(QuillonServiceClient::APP_CATEGORY_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t, MessageParcel& data, MessageParcel& reply, MessageOption&) override
    {
        std::vector<std::string> names;
        (void)data.ReadInterfaceToken();
        (void)data.ReadStringVector(&names);
        std::vector<QuillonServiceClient::AppCategoryInfo> answer;
        for (const auto& info : {QuillonServiceClient::AppCategoryInfo{"com.game.alpha", 2},
                                 QuillonServiceClient::AppCategoryInfo{"com.game.beta", 2},
                                 QuillonServiceClient::AppCategoryInfo{"com.tool.notes", 1}}) {
            if (names.empty() || std::find(names.begin(), names.end(), info.bundleName) != names.end()) {
                answer.push_back(info);
            }
        }
        reply.WriteInt32(up ? QuillonServiceClient::CATEGORY_OK : QuillonServiceClient::CATEGORY_ERR_SERVICE_DOWN);
        reply.WriteInt32(static_cast<int32_t>(answer.size()));
        for (const auto& info : answer) {
            info.Marshalling(reply);
        }
        return 0;
    }
    std::atomic<bool> up = true;
};

// A callback in the service's own process that answers as told: 0 delivered, 6 dead, else transient.
class ScriptedCallback : public ZelCallbackStub {
public:
    explicit ScriptedCallback(int32_t answer = 0) : answer_(answer) {}
    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        received_.push_back(targetFps);
        return answer_;
    }
    Fps Received()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

private:
    const int32_t answer_;
    std::mutex mutex_;
    Fps received_;
};

class GameFpsPolicyTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();
        start_ = PlatformClock::now();
        category_ = samgr_.AddAbility<FakeCategoryService>(QuillonServiceClient::APP_CATEGORY_SA_ID, categoryProcess_);
    }
    void TearDown() override { ASSERT_TRUE(VirtualClock::WaitQuiet()); }

    void EnableAndClassify()
    {
        ZelManagerConfig::GetEnableConfig()["supperGameFpsSolution"] = true;
        policy_->SetGameFpsSwtich();
        policy_->QueryGamePkg({}, 5);
    }
    int32_t Register(const std::string& pkgName, const sptr<ScriptedCallback>& callback)
    {
        sptr<IZelCallbackInterface> held = callback;
        return policy_->RegisterGameFpsListener(pkgName, held);
    }
    void RunUntil(int64_t ms) { ASSERT_TRUE(VirtualClock::AdvanceTo(start_ + PlatformClock::duration(ms))); }

    Tarvo::Test::ScopedServiceManager samgr_;
    std::shared_ptr<VirtualProcess> categoryProcess_ = Tarvo::Test::MakeProcess(20, "category");
    sptr<FakeCategoryService> category_;
    GameFpsPolicy* policy_ = GameFpsPolicy::GetInstance();
    PlatformClock::time_point start_;
    HiviewDFX::LogCapture log_;
};

TEST_F(GameFpsPolicyTest, WhileSwitchedOffNothingIsRegisteredStoredOrClassified)
{
    sptr<ScriptedCallback> game = new ScriptedCallback();
    EXPECT_EQ(Register("com.game.alpha", game), 1);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    policy_->QueryGamePkg({}, 5);
    EXPECT_EQ(log_.Messages(LOG_INFO),
              (Strings{kNotEnabled, kNotEnabled,
                       "GameFpsPolicy QueryGamePkg] The solution is not enabled,Check configuration file."}));

    // Switched on later: the target sent while off was never kept.
    EnableAndClassify();
    EXPECT_EQ(Register("com.game.alpha", game), 0);
    EXPECT_TRUE(game->Received().empty());
    EXPECT_EQ(
        log_.Count(LOG_DEBUG, "GameFpsPolicy::NotifyGameFpsChange, pkgName = com.game.alpha, callback is not found."),
        1u);
}

TEST_F(GameFpsPolicyTest, RegistrationNeedsACallbackAndAPackageName)
{
    EnableAndClassify();
    sptr<IZelCallbackInterface> none;
    sptr<ScriptedCallback> game = new ScriptedCallback();
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", none), 1);
    EXPECT_EQ(Register("", game), 1);
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              (Strings{"GameFpsPolicy RegisterGameFpsListener params verify faild, pkgName = com.game.alpha",
                       "GameFpsPolicy RegisterGameFpsListener params verify faild, pkgName = "}));
}

// Invalid settings leave the defaults: one package keeps six callbacks, a seventh drops the first.
TEST_F(GameFpsPolicyTest, CallbackBoundsComeOnlyFromTwoNonZeroNumbers)
{
    const std::string absent = "GameFpsPolicy::SetMaxCallbackSize no config callback size.";
    const std::string zero = "GameFpsPolicy::SetMaxCallbackSize callback size verify faild.";
    const std::vector<std::pair<std::vector<int32_t>, std::string>> cases = {
        {{}, absent}, {{3}, absent}, {{3, 1, 1}, absent}, {{0, 1}, zero}, {{3, 0}, zero}};
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    for (const auto& [setting, message] : cases) {
        numbers.erase("maxCallbackSize");
        if (!setting.empty()) {
            numbers["maxCallbackSize"] = setting;
        }
        log_.Clear();
        policy_->SetMaxCallbackSize();
        EXPECT_EQ(log_.Lines(), Strings{"E " + message}) << setting.size();
    }
    EnableAndClassify();
    std::vector<sptr<ScriptedCallback>> games;
    for (int i = 0; i < 7; i++) {
        games.push_back(new ScriptedCallback());
        EXPECT_EQ(Register("com.game.alpha", games.back()), 0);
    }
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 30), 0);
    EXPECT_TRUE(games[0]->Received().empty());
    EXPECT_EQ(games[1]->Received(), Fps{30});
}

// Tried at once and at 2, 4 and 6 s, unregistered at 8 s; a game that recovers ends the cycle.
TEST_F(GameFpsPolicyTest, TransientFailuresAreRetriedEveryTwoSecondsThenUnregistered)
{
    EnableAndClassify();
    sptr<ScriptedCallback> notReady = new ScriptedCallback(2);
    sptr<ScriptedCallback> fine = new ScriptedCallback(0);
    EXPECT_EQ(Register("com.game.alpha", notReady), 0);
    EXPECT_EQ(Register("com.game.beta", fine), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    RunUntil(1999);
    EXPECT_EQ(notReady->Received(), Fps{60});
    RunUntil(7999);
    EXPECT_EQ(notReady->Received(), (Fps{60, 60, 60, 60}));
    EXPECT_FALSE(
        log_.Contains(LOG_INFO, "GameFpsPolicy::RetryCallback the number of retry times reaches the upper limit."));
    RunUntil(8000);
    EXPECT_EQ(log_.Messages(LOG_INFO).back(),
              "GameFpsPolicy::RetryCallback the number of retry times reaches the upper limit.");
    EXPECT_TRUE(
        log_.Contains(LOG_INFO, "GameFpsPolicy::RemoveCallback remove pkgName = com.game.alpha callback success."));
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 90), 0);
    RunUntil(20000);
    EXPECT_EQ(notReady->Received().size(), 4u);

    // A retry that finds everyone answering ends the cycle.
    policy_->SetGameFpsForThermalControl("com.game.beta", 45);
    policy_->RetryCallback({sptr<IZelCallbackInterface>(fine)}, "com.game.beta", 45, 2);
    EXPECT_EQ(fine->Received(), (Fps{45, 45}));
    EXPECT_TRUE(log_.Contains(LOG_INFO, "GameFpsPolicy::RetryCallback pkgName = com.game.beta, TRetry all succeeded"));
}

// A retry still carrying an outdated target, or for a package without one, stops by itself.
TEST_F(GameFpsPolicyTest, StaleRetriesStopWithoutCalling)
{
    EnableAndClassify();
    sptr<ScriptedCallback> game = new ScriptedCallback();
    EXPECT_EQ(Register("com.game.alpha", game), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 90), 0);
    log_.Clear();
    policy_->RetryCallback({sptr<IZelCallbackInterface>(game)}, "com.game.alpha", 60, 2);
    policy_->RetryCallback({sptr<IZelCallbackInterface>(game)}, "com.game.other", 60, 2);
    EXPECT_EQ(game->Received(), Fps{90});
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              (Strings{"GameFpsPolicy::RetryCallback pkgName = com.game.alpha, The target frame rate changes. The "
                       "retry is canceled.",
                       "GameFpsPolicy::RetryCallback pkgName = com.game.other, The target frame rate changes. The "
                       "retry is canceled."}));
}

TEST_F(GameFpsPolicyTest, ACallbackNobodyHoldsIsDroppedWithoutACall)
{
    EnableAndClassify();
    EXPECT_EQ(Register("com.game.beta", new ScriptedCallback()), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.beta", 60), 0);
    EXPECT_EQ(log_.Count(LOG_WARN, "GameFpsPolicy::NotifyGameFpsChange client is dead."), 1u);
    EXPECT_TRUE(
        log_.Contains(LOG_INFO, "GameFpsPolicy::RemoveCallback remove pkgName = com.game.beta callback success."));
    EXPECT_FALSE(log_.Contains(LOG_ERROR, kNothingRemoved));
}

// The set of games is bounded inclusively and gives way alphabetically, even to a name it holds.
TEST_F(GameFpsPolicyTest, AFullGameSetGivesWayEvenToANameItHolds)
{
    ZelManagerConfig::GetIntNumbersConfig()["maxCallbackSize"] = {2, 5};
    policy_->SetMaxCallbackSize();
    EnableAndClassify();  // alpha and beta
    EXPECT_EQ(policy_->ExecuteQueryGamePkg({"com.game.beta"}), 0);
    sptr<ScriptedCallback> game = new ScriptedCallback();
    EXPECT_EQ(Register("com.game.alpha", game), 1);
    EXPECT_EQ(Register("com.game.beta", game), 0);
    category_->up = false;
    EXPECT_EQ(policy_->ExecuteQueryGamePkg({"com.game.beta"}), 5);
}

}  // namespace
}  // namespace Tarvo::Vantel
