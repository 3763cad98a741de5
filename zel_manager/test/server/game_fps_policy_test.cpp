// The game listener registry: admission, bounds, the parked-registration cache, notification and
// its retry cycle, and the game classification, with games and the category service in processes
// of their own and time virtual.
#include "game_fps_policy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>

#include "app_category_info.h"
#include "app_category_interface.h"
#include "hilog.h"
#include "ipc_driver.h"
#include "ipc_object_stub.h"
#include "ipc_types.h"
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
using HiviewDFX::LogCapture;
using QuillonServiceClient::AppCategoryInfo;

const std::string kNotEnabled =
    "GameFpsPolicy RegisterGameFpsListener] The solution is not enabled,Check configuration file.";
const std::string kGiveUp = "GameFpsPolicy::RetryCallback the number of retry times reaches the upper limit.";
const std::string kNothingRemoved = "GameFpsPolicy::RemoveCallback no callback remove.";
const std::string kClientDead = "GameFpsPolicy::NotifyGameFpsChange client is dead.";

std::string SendFailed()
{
    return "[ZelCallbackProxy::OnGameFpsChange] SendRequest is failed, error code: " +
           std::to_string(ERR_TRANSACTION_FAILED);
}

// The app-category service: answers from its table, or that it cannot classify now.
class FakeCategoryService : public IPCObjectStub {
public:
    FakeCategoryService() : IPCObjectStub(QuillonServiceClient::APP_CATEGORY_DESCRIPTOR) {}
    int OnRemoteRequest(uint32_t, MessageParcel& data, MessageParcel& reply, MessageOption&) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<std::string> names;
        (void)data.ReadInterfaceToken();
        (void)data.ReadStringVector(&names);
        asked_.push_back(names);
        if (!up_) {
            reply.WriteInt32(QuillonServiceClient::CATEGORY_ERR_SERVICE_DOWN);
            return 0;
        }
        std::vector<AppCategoryInfo> answer;
        for (const auto& info : table_) {
            if (names.empty() || std::find(names.begin(), names.end(), info.bundleName) != names.end()) {
                answer.push_back(info);
            }
        }
        reply.WriteInt32(QuillonServiceClient::CATEGORY_OK);
        reply.WriteInt32(static_cast<int32_t>(answer.size()));
        for (const auto& info : answer) {
            info.Marshalling(reply);
        }
        return 0;
    }
    void Set(bool up, std::vector<AppCategoryInfo> table)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        up_ = up;
        table_ = std::move(table);
    }
    size_t Asked()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return asked_.size();
    }

private:
    std::mutex mutex_;
    bool up_ = true;
    std::vector<AppCategoryInfo> table_;
    std::vector<std::vector<std::string>> asked_;
};

// A game's callback: the frame rates it was told.
class RecordingGame : public ZelCallbackStub {
public:
    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        received_.push_back(targetFps);
        return 0;
    }
    std::vector<uint32_t> Received()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

private:
    std::mutex mutex_;
    std::vector<uint32_t> received_;
};

// A callback in the service's own process that answers as told: 6 dead, 2 or 3 transient.
class ScriptedCallback : public ZelCallbackStub {
public:
    explicit ScriptedCallback(int32_t answer) : answer_(answer) {}
    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        received_.push_back(targetFps);
        return answer_;
    }
    std::vector<uint32_t> Received()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

private:
    const int32_t answer_;
    std::mutex mutex_;
    std::vector<uint32_t> received_;
};

struct Game {
    std::shared_ptr<VirtualProcess> process;
    sptr<RecordingGame> stub;
    sptr<IZelCallbackInterface> callback;  // the service's proxy of the stub
};

class GameFpsPolicyTest : public testing::Test {
protected:
    void SetUp() override
    {
        VirtualClock::Install();
        start_ = PlatformClock::now();
        category_ = samgr_.AddAbility<FakeCategoryService>(QuillonServiceClient::APP_CATEGORY_SA_ID, categoryProcess_);
        category_->Set(true, {{"com.game.alpha", 2}, {"com.game.beta", 2}, {"com.tool.notes", 1}});
        scope_ = std::make_unique<ScopedProcess>(service_);
        policy_ = GameFpsPolicy::GetInstance();
    }
    void TearDown() override { ASSERT_TRUE(VirtualClock::WaitQuiet()); }

    void EnableAndClassify()
    {
        ZelManagerConfig::GetEnableConfig()["supperGameFpsSolution"] = true;
        policy_->SetGameFpsSwtich();
        policy_->QueryGamePkg({}, 5);
    }
    void RunUntil(int64_t ms) { ASSERT_TRUE(VirtualClock::AdvanceTo(start_ + PlatformClock::duration(ms))); }

    // A game in a process of its own, as the service holds it after a registration request.
    Game MakeGame(int32_t pid)
    {
        Game game{Tarvo::Test::MakeProcess(pid, "game" + std::to_string(pid), Security::AccessToken::TOKEN_HAP),
                  nullptr, nullptr};
        {
            ScopedProcess scope(game.process);
            game.stub = new RecordingGame();
        }
        MessageParcel parcel;
        parcel.WriteRemoteObject(game.stub->AsObject());
        game.callback = iface_cast<IZelCallbackInterface>(parcel.ReadRemoteObject());
        return game;
    }
    size_t Count(HiviewDFX::LogLevel level, const std::string& text) const { return log_.Count(level, text); }

    Tarvo::Test::ScopedServiceManager samgr_;
    std::shared_ptr<VirtualProcess> categoryProcess_ = Tarvo::Test::MakeProcess(20, "category");
    sptr<FakeCategoryService> category_;
    std::shared_ptr<VirtualProcess> service_ = Tarvo::Test::MakeProcess(200, "zel_manager");
    std::unique_ptr<ScopedProcess> scope_;
    GameFpsPolicy* policy_ = nullptr;
    PlatformClock::time_point start_;
    LogCapture log_;
};

TEST_F(GameFpsPolicyTest, WhileSwitchedOffNothingIsRegisteredOrStored)
{
    Game game = MakeGame(400);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", game.callback), 1);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    policy_->QueryGamePkg({}, 5);
    EXPECT_EQ(category_->Asked(), 0u);
    EXPECT_EQ(log_.Messages(LOG_INFO),
              (std::vector<std::string>{
                  kNotEnabled, kNotEnabled,
                  "GameFpsPolicy QueryGamePkg] The solution is not enabled,Check configuration file."}));

    // Switched on later, the earlier target was never kept.
    EnableAndClassify();
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", game.callback), 0);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_TRUE(game.stub->Received().empty());
    EXPECT_EQ(Count(LOG_DEBUG, "GameFpsPolicy::NotifyGameFpsChange, pkgName = com.game.alpha, callback is not found."),
              1u);
}

TEST_F(GameFpsPolicyTest, BadOrForeignRequestsAreRefused)
{
    EnableAndClassify();
    Game game = MakeGame(400);
    sptr<IZelCallbackInterface> none;
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", none), 1);
    EXPECT_EQ(policy_->RegisterGameFpsListener("", game.callback), 1);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.tool.notes", game.callback), 1);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("", 60), 1);
    policy_->AddOrRemoveApp("", true);
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              (std::vector<std::string>{
                  "GameFpsPolicy RegisterGameFpsListener params verify faild, pkgName = com.game.alpha",
                  "GameFpsPolicy RegisterGameFpsListener params verify faild, pkgName = ",
                  "GameFpsPolicy::AddOrRemoveApp pkgName verify fail.",
              }));
    EXPECT_EQ(log_.Messages(LOG_WARN),
              (std::vector<std::string>{
                  "GameFpsPolicy RegisterGameFpsListener package name is not game, pkgName = com.tool.notes",
                  "GameFpsPolicy::SetGameFpsForThermalControl params verify faild.",
              }));

    // A removed package stays registered but admits nobody new.
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.beta", game.callback), 0);
    policy_->AddOrRemoveApp("com.game.beta", false);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.beta", game.callback), 1);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.beta", 45), 0);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(game.stub->Received(), std::vector<uint32_t>{45});
}

TEST_F(GameFpsPolicyTest, TargetsReachRegisteredGamesAndLateRegistrantsAtOnce)
{
    EnableAndClassify();
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::ExecuteQueryGamePkg add game pkgName = com.game.alpha"), 1u);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::ExecuteQueryGamePkg add game pkgName = com.game.beta"), 1u);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::ExecuteQueryGamePkg ret = 0"), 1u);
    Game first = MakeGame(400);
    Game second = MakeGame(401);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", first.callback), 0);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(first.stub->Received(), std::vector<uint32_t>{60});

    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", second.callback), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 4294967295u), 0);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(first.stub->Received(), (std::vector<uint32_t>{60, 60, 4294967295u}));
    EXPECT_EQ(second.stub->Received(), (std::vector<uint32_t>{60, 4294967295u}));
    EXPECT_EQ(Count(LOG_INFO,
                    "GameFpsPolicy::SetGameFpsForThermalControl put mGameFpsMap success. pkgName "
                    "=com.game.alpha, fps = 60 ."),
              1u);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy RegisterGameFpsListener register success, pkgName = com.game.alpha"), 2u);
}

TEST_F(GameFpsPolicyTest, ZeroTargetIsForgottenOnceEveryoneHasIt)
{
    EnableAndClassify();
    Game game = MakeGame(400);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", game.callback), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 0), 0);
    Game late = MakeGame(401);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", late.callback), 0);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(game.stub->Received(), std::vector<uint32_t>{0});
    EXPECT_TRUE(late.stub->Received().empty());
}

// Strict bounds: a list of 6 is appended to; a 7th registration first drops the oldest.
TEST_F(GameFpsPolicyTest, CallbackListSettlesOneAboveItsBound)
{
    EnableAndClassify();
    std::vector<Game> games;
    for (int32_t i = 0; i < 7; i++) {
        games.push_back(MakeGame(400 + i));
        EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", games.back().callback), 0);
    }
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 30), 0);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_TRUE(games[0].stub->Received().empty());
    for (size_t i = 1; i < games.size(); i++) {
        EXPECT_EQ(games[i].stub->Received(), std::vector<uint32_t>{30}) << i;
    }
}

TEST_F(GameFpsPolicyTest, CallbackBoundsComeOnlyFromTwoNonZeroNumbers)
{
    auto& numbers = ZelManagerConfig::GetIntNumbersConfig();
    policy_->SetMaxCallbackSize();
    numbers["maxCallbackSize"] = {3};
    policy_->SetMaxCallbackSize();
    numbers["maxCallbackSize"] = {3, 1, 1};
    policy_->SetMaxCallbackSize();
    numbers["maxCallbackSize"] = {0, 1};
    policy_->SetMaxCallbackSize();
    numbers["maxCallbackSize"] = {3, 0};
    policy_->SetMaxCallbackSize();
    EXPECT_EQ(log_.Messages(LOG_ERROR), (std::vector<std::string>{
                                            "GameFpsPolicy::SetMaxCallbackSize no config callback size.",
                                            "GameFpsPolicy::SetMaxCallbackSize no config callback size.",
                                            "GameFpsPolicy::SetMaxCallbackSize no config callback size.",
                                            "GameFpsPolicy::SetMaxCallbackSize callback size verify faild.",
                                            "GameFpsPolicy::SetMaxCallbackSize callback size verify faild.",
                                        }));
    // The defaults stood: six listeners are kept.
    EnableAndClassify();
    std::vector<Game> games;
    for (int32_t i = 0; i < 6; i++) {
        games.push_back(MakeGame(400 + i));
        EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", games.back().callback), 0);
    }
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 30), 0);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(games[0].stub->Received(), std::vector<uint32_t>{30});

    // One package and one callback: the map settles at two packages, each list at two.
    numbers["maxCallbackSize"] = {1, 1};
    policy_->SetMaxCallbackSize();
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::SetMaxCallbackSize set callback size success."), 1u);
    category_->Set(true, {{"com.game.alpha", 2}, {"com.game.beta", 2}, {"com.game.gamma", 2}});
    policy_->QueryGamePkg({"com.game.gamma"}, 1);
    Game beta = MakeGame(420);
    Game gamma = MakeGame(421);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.beta", beta.callback), 0);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.gamma", gamma.callback), 1);
    EXPECT_EQ(Count(LOG_WARN, "GameFpsPolicy RegisterGameFpsListener The package name storage is full."), 1u);
}

TEST_F(GameFpsPolicyTest, RegistrationDuringClassificationIsParkedThenReplayedOrDropped)
{
    EnableAndClassify();
    category_->Set(false, {});
    policy_->AddOrRemoveApp("com.game.new", true);
    policy_->AddOrRemoveApp("com.tool.new", true);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(Count(LOG_ERROR, "GameFpsPolicy::ExecuteQueryGamePkg faild."), 2u);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::QueryGamePkg next time."), 2u);

    Game game = MakeGame(400);
    Game tool = MakeGame(401);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.new", game.callback), 0);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.new", game.callback), 0);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.tool.new", tool.callback), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.new", 40), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.tool.new", 40), 0);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy RegisterGameFpsListener pkgName = com.game.new is querying"), 2u);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::AddToCallbackCache pkgName = com.game.new save cache success."), 1u);

    category_->Set(true, {{"com.game.new", 2}, {"com.tool.new", 1}});
    RunUntil(5000);
    // Parked twice, replayed twice: the second replay reaches both listings.
    EXPECT_EQ(game.stub->Received(), (std::vector<uint32_t>{40, 40, 40}));
    EXPECT_TRUE(tool.stub->Received().empty());
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::RestoreCacheCallback pkgName = com.game.new restore success."), 1u);
    EXPECT_EQ(Count(LOG_INFO,
                    "GameFpsPolicy::RestoreCacheCallback pkgName = com.tool.new no game, remove callback "
                    "cache"),
              1u);
    // No longer being classified: a non-game is refused again.
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.tool.new", tool.callback), 1);
    // Adding a known game asks nobody.
    size_t asked = category_->Asked();
    policy_->AddOrRemoveApp("com.game.new", true);
    ASSERT_TRUE(VirtualClock::WaitQuiet());
    EXPECT_EQ(category_->Asked(), asked);
}

// Tries at 0, 5 and 10 s; at 15 s the package is judged by the game set as it stands.
TEST_F(GameFpsPolicyTest, ClassificationGivesUpAfterItsRetriesAndDropsParkedCallbacks)
{
    EnableAndClassify();
    category_->Set(false, {});
    size_t asked = category_->Asked();
    policy_->AddOrRemoveApp("com.game.late", true);
    Game game = MakeGame(400);
    RunUntil(1);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.late", game.callback), 0);
    RunUntil(14999);
    EXPECT_EQ(category_->Asked() - asked, 3u);
    EXPECT_FALSE(log_.Contains(LOG_INFO,
                               "GameFpsPolicy::QueryGamePkg the number of retry times reaches the upper "
                               "limit."));
    RunUntil(15000);
    EXPECT_EQ(category_->Asked() - asked, 3u);
    EXPECT_EQ(log_.Messages(LOG_INFO).back(),
              "GameFpsPolicy::RestoreCacheCallback pkgName = com.game.late no game, remove callback cache");
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::QueryGamePkg the number of retry times reaches the upper limit."), 1u);
    EXPECT_TRUE(game.stub->Received().empty());
}

// The game set is bounded inclusively and gives way alphabetically, even to a name it holds.
TEST_F(GameFpsPolicyTest, FullGameSetEvictsTheLowestName)
{
    ZelManagerConfig::GetIntNumbersConfig()["maxCallbackSize"] = {2, 5};
    policy_->SetMaxCallbackSize();
    EnableAndClassify();
    category_->Set(true, {{"com.game.alpha", 2}, {"com.game.beta", 2}});
    EXPECT_EQ(policy_->ExecuteQueryGamePkg({"com.game.beta"}), 0);
    Game game = MakeGame(400);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", game.callback), 1);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.beta", game.callback), 0);
    category_->Set(false, {});
    EXPECT_EQ(policy_->ExecuteQueryGamePkg({"com.game.beta"}), 5);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::ExecuteQueryGamePkg ret = 3"), 1u);
}

// An unanswered callback is tried at 0, 2, 4 and 6 s and unregistered at 8 s.
TEST_F(GameFpsPolicyTest, FailingCallbackIsRetriedThenUnregistered)
{
    EnableAndClassify();
    Game game = MakeGame(400);
    sptr<ScriptedCallback> notReady = new ScriptedCallback(2);
    sptr<IZelCallbackInterface> local = notReady;
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", game.callback), 0);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", local), 0);
    IPCDriver::GetInstance().SetTransportFault(400, true);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    EXPECT_EQ(Count(LOG_ERROR, SendFailed()), 1u);
    RunUntil(1999);
    EXPECT_EQ(Count(LOG_ERROR, SendFailed()), 1u);
    RunUntil(2000);
    EXPECT_EQ(Count(LOG_ERROR, SendFailed()), 2u);
    RunUntil(6000);
    EXPECT_EQ(Count(LOG_ERROR, SendFailed()), 4u);
    EXPECT_FALSE(log_.Contains(LOG_INFO, kGiveUp));
    RunUntil(8000);
    EXPECT_EQ(Count(LOG_ERROR, SendFailed()), 4u);
    EXPECT_EQ(notReady->Received(), (std::vector<uint32_t>{60, 60, 60, 60}));
    EXPECT_EQ(log_.Messages(LOG_INFO).back(), kGiveUp);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::RemoveCallback remove pkgName = com.game.alpha callback success."), 1u);

    IPCDriver::GetInstance().SetTransportFault(400, false);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    RunUntil(20000);
    EXPECT_TRUE(game.stub->Received().empty());
    EXPECT_EQ(Count(LOG_ERROR, SendFailed()), 4u);
}

TEST_F(GameFpsPolicyTest, RetryCycleEndsWhenTheGameRecoversOrTheTargetChanges)
{
    EnableAndClassify();
    Game game = MakeGame(400);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", game.callback), 0);
    IPCDriver::GetInstance().SetTransportFault(400, true);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    RunUntil(1000);
    // A new target restarts the cycle: the 2 s retry of 60 never runs.
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 90), 0);
    RunUntil(2999);
    EXPECT_EQ(Count(LOG_ERROR, SendFailed()), 2u);
    IPCDriver::GetInstance().SetTransportFault(400, false);
    RunUntil(3000);
    EXPECT_EQ(game.stub->Received(), std::vector<uint32_t>{90});
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::RetryCallback pkgName = com.game.alpha, TRetry all succeeded"), 1u);
    RunUntil(20000);
    EXPECT_EQ(game.stub->Received(), std::vector<uint32_t>{90});

    // A retry that still carries an outdated target stops by itself.
    policy_->RetryCallback({game.callback}, "com.game.alpha", 60, 2);
    policy_->RetryCallback({game.callback}, "com.game.other", 60, 2);
    EXPECT_EQ(log_.Messages(LOG_ERROR),
              (std::vector<std::string>{
                  SendFailed(),
                  kNothingRemoved,
                  SendFailed(),
                  kNothingRemoved,
                  kNothingRemoved,
                  "GameFpsPolicy::RetryCallback pkgName = com.game.alpha, The target frame rate changes. The retry "
                  "is canceled.",
                  "GameFpsPolicy::RetryCallback pkgName = com.game.other, The target frame rate changes. The retry "
                  "is canceled.",
              }));
    EXPECT_EQ(game.stub->Received(), std::vector<uint32_t>{90});
}

// A callback answering "dead" is erased and the one after it is unregistered in its place; the
// dead one goes at the next target, being last by then.
TEST_F(GameFpsPolicyTest, DeadClientTakesItsSuccessorOutOfTheRegistry)
{
    EnableAndClassify();
    sptr<ScriptedCallback> dying = new ScriptedCallback(6);
    sptr<ScriptedCallback> alive = new ScriptedCallback(0);
    sptr<IZelCallbackInterface> first = dying;
    sptr<IZelCallbackInterface> second = alive;
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", first), 0);
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.alpha", second), 0);

    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 60), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 30), 0);
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.alpha", 45), 0);
    EXPECT_EQ(dying->Received(), (std::vector<uint32_t>{60, 30}));
    EXPECT_EQ(alive->Received(), std::vector<uint32_t>{60});
    EXPECT_EQ(Count(LOG_WARN, kClientDead), 2u);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::RemoveCallback remove pkgName = com.game.alpha callback success."), 1u);
    // Twice at registration (no target yet), once for the package nobody listens to any more.
    EXPECT_EQ(Count(LOG_DEBUG, "GameFpsPolicy::NotifyGameFpsChange, pkgName = com.game.alpha, callback is not found."),
              3u);

    // A callback nobody holds any more is dropped without a call.
    sptr<IZelCallbackInterface> local = new RecordingGame();
    EXPECT_EQ(policy_->RegisterGameFpsListener("com.game.beta", local), 0);
    local = nullptr;
    EXPECT_EQ(policy_->SetGameFpsForThermalControl("com.game.beta", 60), 0);
    EXPECT_EQ(Count(LOG_WARN, kClientDead), 3u);
    EXPECT_EQ(Count(LOG_INFO, "GameFpsPolicy::RemoveCallback remove pkgName = com.game.beta callback success."), 1u);
}

}  // namespace
}  // namespace Tarvo::Vantel
