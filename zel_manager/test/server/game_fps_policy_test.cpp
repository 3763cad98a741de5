// The game listener registry in the cases a device cannot stage: arguments the service never
// passes, the bound settings, callbacks in the service's own process and stale retries.
// Registration, targets, bounds, classification and retries across processes are played in
// examples/scenarios/game_*.scn.
#include "game_fps_policy.h"

#include <gtest/gtest.h>

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
using HiviewDFX::LOG_ERROR;
using HiviewDFX::LOG_INFO;
using QuillonServiceClient::AppCategoryInfo;
using Fps = std::vector<uint32_t>;
using Strings = std::vector<std::string>;

// The app-category service, answering every query with its list (or that it cannot classify).
class FakeCategoryService : public IPCObjectStub {
public:
    FakeCategoryService() : IPCObjectStub(QuillonServiceClient::APP_CATEGORY_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t, MessageParcel&, MessageParcel& reply, MessageOption&) override
    {
        reply.WriteInt32(up ? QuillonServiceClient::CATEGORY_OK : QuillonServiceClient::CATEGORY_ERR_SERVICE_DOWN);
        reply.WriteInt32(static_cast<int32_t>(answer.size()));
        for (const auto& info : answer) {
            info.Marshalling(reply);
        }
        return 0;
    }
    bool up = true;
    std::vector<AppCategoryInfo> answer = {{"com.game.alpha", 2}, {"com.game.beta", 2}, {"com.tool.notes", 1}};
};

// A callback in the service's own process that answers as told: 0 delivered, 6 dead, else
// transient. Read only once the clock has settled.
class ScriptedCallback : public ZelCallbackStub {
public:
    explicit ScriptedCallback(int32_t answer = 0) : answer_(answer) {}
    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        received.push_back(targetFps);
        return answer_;
    }
    Fps received;

private:
    const int32_t answer_;
};

class GameFpsPolicyTest : public testing::Test {
protected:
    void SetUp() override { VirtualClock::Install(); }
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

    Tarvo::Test::ScopedServiceManager samgr_;
    std::shared_ptr<VirtualProcess> categoryProcess_ = Tarvo::Test::MakeProcess(20, "category");
    sptr<FakeCategoryService> category_ =
        samgr_.AddAbility<FakeCategoryService>(QuillonServiceClient::APP_CATEGORY_SA_ID, categoryProcess_);
    GameFpsPolicy* policy_ = GameFpsPolicy::GetInstance();
    sptr<ScriptedCallback> game_ = new ScriptedCallback();
    HiviewDFX::LogCapture log_;
};

TEST_F(GameFpsPolicyTest, RegistrationNeedsACallbackAndAPackageName)
{
    EnableAndClassify();
    sptr<IZelCallbackInterface> none;
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", none), 1);
    EXPECT_EQ(Register("", game_), 1);
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              (Strings{"GameFpsPolicy RegisterGameFpsListener params verify faild, pkgName = com.game.alpha",
                       "GameFpsPolicy RegisterGameFpsListener params verify faild, pkgName = "}));
}

// Invalid settings leave the defaults: a package keeps six callbacks, a seventh drops the first.
TEST_F(GameFpsPolicyTest, CallbackBoundsComeOnlyFromTwoNonZeroNumbers)
{
    const std::string absent = "E GameFpsPolicy::SetMaxCallbackSize no config callback size.";
    const std::string zero = "E GameFpsPolicy::SetMaxCallbackSize callback size verify faild.";
    const std::vector<std::pair<std::vector<int32_t>, std::string>> cases = {
        {{}, absent}, {{3}, absent}, {{3, 1, 1}, absent}, {{0, 1}, zero}, {{3, 0}, zero}};
    for (const auto& [setting, line] : cases) {
        ZelManagerConfig::GetIntNumbersConfig()["maxCallbackSize"] = setting;
        log_.Clear();
        policy_->SetMaxCallbackSize();
        EXPECT_EQ(log_.Lines(), Strings{line}) << setting.size();
    }
    EnableAndClassify();
    std::vector<sptr<ScriptedCallback>> games = {game_};
    for (int i = 0; i < 7; i++) {
        EXPECT_EQ(Register("com.game.alpha", games.back()), 0);
        games.push_back(new ScriptedCallback());
    }
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 30), 0);
    EXPECT_TRUE(games[0]->received.empty());
    EXPECT_EQ(games[1]->received, Fps{30});
}

// Any answer but 0 and 6 is transient: retried 2 s later, and a retry reaching everyone ends it.
TEST_F(GameFpsPolicyTest, TransientAnswersAreRetriedUntilEveryoneHasTheTarget)
{
    EnableAndClassify();
    sptr<ScriptedCallback> notReady = new ScriptedCallback(2);
    EXPECT_EQ(Register("com.game.alpha", notReady), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    ASSERT_TRUE(VirtualClock::AdvanceBy(std::chrono::milliseconds(2000)));
    EXPECT_EQ(notReady->received, (Fps{60, 60}));

    EXPECT_EQ(Register("com.game.beta", game_), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.beta", 45), 0);
    policy_->RetryCallback({sptr<IZelCallbackInterface>(game_)}, "com.game.beta", 45, 2);
    EXPECT_EQ(game_->received, (Fps{45, 45}));
    EXPECT_TRUE(log_.Contains(LOG_ERROR, "GameFpsPolicy::RemoveCallback no callback remove."));
    EXPECT_TRUE(log_.Contains(LOG_INFO, "GameFpsPolicy::RetryCallback pkgName = com.game.beta, TRetry all succeeded"));
}

// A retry still carrying an outdated target, or for a package without one, stops by itself.
TEST_F(GameFpsPolicyTest, StaleRetriesStopWithoutCalling)
{
    EnableAndClassify();
    EXPECT_EQ(Register("com.game.alpha", game_), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 90), 0);
    log_.Clear();
    for (const std::string pkgName : {"com.game.alpha", "com.game.other"}) {
        policy_->RetryCallback({sptr<IZelCallbackInterface>(game_)}, pkgName, 60, 2);
        EXPECT_EQ(log_.Messages(LOG_ERROR).back(), "GameFpsPolicy::RetryCallback pkgName = " + pkgName +
                                                       ", The target frame rate changes. The retry is canceled.");
    }
    EXPECT_EQ(game_->received, Fps{90});
}

TEST_F(GameFpsPolicyTest, ACallbackNobodyHoldsIsDroppedWithoutACall)
{
    EnableAndClassify();
    EXPECT_EQ(Register("com.game.beta", new ScriptedCallback()), 0);
    log_.Clear();
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.beta", 60), 0);
    EXPECT_EQ(log_.Lines(),
              (Strings{"I GameFpsPolicy::SetGameFpsForThermalControl put mGameFpsMap success. pkgName =com.game.beta, "
                       "fps = 60 .",
                       "W GameFpsPolicy::NotifyGameFpsChange client is dead.",
                       "I GameFpsPolicy::RemoveCallback remove pkgName = com.game.beta callback success."}));
}

// The set of games is bounded inclusively and gives way alphabetically, even to a name it holds.
TEST_F(GameFpsPolicyTest, AFullGameSetGivesWayEvenToANameItHolds)
{
    ZelManagerConfig::GetIntNumbersConfig()["maxCallbackSize"] = {2, 5};
    policy_->SetMaxCallbackSize();
    EnableAndClassify();  // alpha and beta
    category_->answer = {{"com.game.beta", 2}};
    EXPECT_EQ(policy_->ExecuteQueryGamePkg({"com.game.beta"}), 0);
    EXPECT_EQ(Register("com.game.alpha", game_), 1);
    EXPECT_EQ(Register("com.game.beta", game_), 0);
    category_->up = false;
    EXPECT_EQ(policy_->ExecuteQueryGamePkg({"com.game.beta"}), 5);
}

}  // namespace
}  // namespace Tarvo::Vantel
