// The dump read while every component is busy. Real time on purpose: the device's virtual time runs
// one thread at a time, which would hide the contention this is about. Nothing here waits for a
// delay; the tasks the components post come due long after the test.
#include "zel_dump.h"

#include <gtest/gtest.h>

#include <thread>

#include "app_state_data.h"
#include "zel_callback_stub.h"
#include "zel_manager_config.h"

namespace Tarvo::Vantel {
namespace {
const std::string DESKTOP = "com.tarvo.vistadeck";
const std::string GAME = "com.game.alpha";

class QuietCallback : public ZelCallbackStub {
public:
    int32_t OnGameFpsChange(uint32_t) override { return 0; }
};

AppExecFwk::AppStateData AppState(const std::string& bundle, int32_t state)
{
    AppExecFwk::AppStateData data;
    data.bundleName = bundle;
    data.pid = 2000;
    data.state = state;
    data.isFocused = state == 2;
    return data;
}

// Each worker takes the locks of the components it reaches while another dumps; a dump that took
// them out of order, or held one while taking the next, would hang here (ctest's time-out).
TEST(ZelDumpTest, DumpsWhileEveryComponentIsBusy)
{
    constexpr int kRounds = 300;
    ZelManagerConfig::GetEnableConfig()["supperGameFpsSolution"] = true;
    GameFpsPolicy::GetInstance()->SetGameFpsSwtich();
    FrameRateControl::SetBasicSceneAttributes("BACK_DESKTOP", "0");
    FrameRateControl::SetBasicSceneAttributes("FOLDER_OPEN", "1");
    sptr<FrameRateControl> control = FrameRateControl::GetInstance();
    GameFpsPolicy* policy = GameFpsPolicy::GetInstance();
    sptr<IZelCallbackInterface> callback = new QuietCallback();

    std::vector<std::thread> workers;
    workers.emplace_back([&] {
        for (int i = 0; i < kRounds; ++i) {
            control->SetScene(DESKTOP, i % 2 == 0 ? "BACK_DESKTOP" : "FOLDER_OPEN", i % 3);
            control->OnForegroundApplicationChanged(AppState(i % 4 < 2 ? GAME : DESKTOP, i % 2 == 0 ? 2 : 4));
        }
    });
    workers.emplace_back([&] {
        for (int i = 0; i < kRounds; ++i) {
            control->ThermalForceInterface(static_cast<uint32_t>(i % 2 * 90));
            control->NotifyLightState(static_cast<uint32_t>(i % 2), i % 3 == 0);
            policy->AddOrRemoveApp(GAME, i % 2 == 0);
            policy->RegisterGameFpsListener(GAME, callback);
            policy->SetGameFpsForThermalControl(GAME, static_cast<uint32_t>(i));
            ResolutionManager::GetInstance()->SetResolutionMode(i % 4, 0);
        }
    });
    int whole = 0;
    for (int i = 0; i < kRounds / 3; ++i) {
        const ServiceDump dump = CollectServiceDump();
        const std::string json = DumpJson(dump);
        whole +=
            json.rfind("{\"config\":", 0) == 0 && json.back() == '}' && DumpText(dump).rfind("Configuration\n", 0) == 0;
    }
    for (auto& worker : workers) {
        worker.join();
    }
    EXPECT_EQ(whole, kRounds / 3);
    // Settled: the registry shows the game as the last round left it.
    const ServiceDump last = CollectServiceDump();
    EXPECT_EQ(last.games.targets, (std::map<std::string, uint32_t>{{GAME, kRounds - 1}}));
    EXPECT_EQ(last.frameRate.thermForceValue, 90u);
}

}  // namespace
}  // namespace Tarvo::Vantel
