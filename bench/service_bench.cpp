// The service on an emulated device in this process, on the real clock, beside the in-process
// floors (hand_off_floor_bench.cpp, in this program too):
//  - a scene's enter and exit, until the frame-rate arbiter has both notices: called on the
//    service object itself, and through the manager's proxy from another process;
//  - one target frame rate for each of 100 and of 1000 games with 6 callbacks each, until every
//    callback has it (a sweep); reported per callback delivered and per sweep.
// The arbiter is replaced by one that counts; the device's trace of every request is taken off,
// since it is the emulator's cost, not the service's.

#include <benchmark/benchmark.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "bench_measure.h"
#include "device.h"
#include "if_system_ability_manager.h"
#include "ipc_transport.h"
#include "iservice_registry.h"
#include "render_service_stub.h"
#include "zel_callback_stub.h"

namespace Tarvo::Bench {
namespace {
using namespace std::chrono_literals;
using Vantel::IZelManager;
constexpr int kGames = 1000;
constexpr int kCallbacksPerGame = 6;
constexpr int32_t kServiceId = Emu::Device::ZEL_MANAGER_SERVICE_ID;
constexpr auto kLimit = 10s;
const std::string kScenePackage = "com.tarvo.vistadeck";
const std::string kScene = "APP_LIST_FLING";  // interruptible

// Counts events; whoever waits for a mark is woken once it is reached.
class Counter {
public:
    void Add()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (++count_ >= mark_) {
            reached_.notify_all();
        }
    }
    uint64_t Count()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return count_;
    }
    bool WaitFor(uint64_t mark)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        mark_ = mark;
        const bool reached = reached_.wait_for(lock, kLimit, [&] { return count_ >= mark; });
        mark_ = UINT64_MAX;
        return reached;
    }

private:
    std::mutex mutex_;
    std::condition_variable reached_;
    uint64_t count_ = 0;
    uint64_t mark_ = UINT64_MAX;
};

class CountingArbiter : public Vantel::RenderServiceStub {
public:
    void NotifyPackageEvent(uint32_t, const std::vector<std::string>&) override {}
    void NotifyRefreshRateEvent(const Vantel::EventInfo&) override { refresh.Add(); }
    void NotifyLightFactorStatus(bool) override {}
    Counter refresh;
};

class CountingCallback : public Vantel::ZelCallbackStub {
public:
    explicit CountingCallback(Counter& delivered) : delivered_(delivered) {}
    int32_t OnGameFpsChange(uint32_t) override
    {
        delivered_.Add();
        return 0;
    }

private:
    Counter& delivered_;
};

std::string GameBundle(int index)
{
    return "com.bench.game" + std::to_string(index);
}

// The manager as the calling thread's process sees it.
sptr<IZelManager> Manager()
{
    sptr<ISystemAbilityManager> samgr = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    return samgr != nullptr ? iface_cast<IZelManager>(samgr->GetSystemAbility(kServiceId)) : nullptr;
}

// A booted device with the games installed and their callbacks registered; made at first use.
class BenchDevice {
public:
    static BenchDevice& Get()
    {
        static BenchDevice* device = new BenchDevice();  // its threads run until the program ends
        return *device;
    }
    const std::string& Failure() const { return failure_; }
    Emu::Device& Device() { return device_; }
    const std::shared_ptr<VirtualProcess>& Caller() const { return caller_; }
    Counter& Refresh() { return arbiter_->refresh; }
    // A new target `fps` for each of the first `games` games, until all their callbacks have it;
    // from the caller's process.
    bool Sweep(const sptr<IZelManager>& manager, int games, uint32_t fps);

private:
    BenchDevice() : device_(Setup()) { failure_ = Start(); }
    static Emu::DeviceSetup Setup();
    std::string Start();
    std::string RegisterGames();
    bool Register(int game);

    Emu::Device device_;
    std::shared_ptr<VirtualProcess> arbiterProcess_;
    sptr<CountingArbiter> arbiter_;
    std::shared_ptr<VirtualProcess> caller_;
    Counter delivered_;
    std::vector<sptr<CountingCallback>> callbacks_;
    std::string failure_;
};

Emu::DeviceSetup BenchDevice::Setup()
{
    Emu::DeviceSetup setup;
    setup.serviceLibrary = ZEL_SERVICE_LIBRARY;
    // Its bounds take 1000 games with 6 callbacks each.
    setup.defaultConfig = ZEL_DEFAULT_CONFIG;
    return setup;
}

std::string BenchDevice::Start()
{
    std::string error;
    if (!device_.Failure().empty()) {
        return device_.Failure();
    }
    arbiterProcess_ = device_.MakeServiceProcess("bench.arbiter");
    {
        ScopedProcess scope(arbiterProcess_);
        arbiter_ = new CountingArbiter();
    }
    device_.AddSystemAbility(Vantel::IRenderService::RENDER_SERVICE_ID, arbiter_);
    for (int game = 0; game < kGames; ++game) {
        if (!device_.InstallPackage({GameBundle(game), 0, true, false, std::nullopt}, &error)) {
            return error;
        }
    }
    if (!device_.Boot(&error)) {
        return error;
    }
    caller_ = device_.MakeServiceProcess("bench.caller");
    IPCTransport::Get().SetTransactionObserver(nullptr);
    return RegisterGames();
}

std::string BenchDevice::RegisterGames()
{
    // Start-up takes a few seconds of real time; a game is refused until it is known as one.
    const auto giveUp = std::chrono::steady_clock::now() + 30s;
    while (!Register(0)) {
        if (std::chrono::steady_clock::now() > giveUp) {
            return "the service did not take a game's callback";
        }
        std::this_thread::sleep_for(50ms);
    }
    for (int game = 0; game < kGames; ++game) {
        for (int i = game == 0 ? 1 : 0; i < kCallbacksPerGame; ++i) {
            if (!Register(game)) {
                return "registering a callback of " + GameBundle(game) + " failed";
            }
        }
    }
    // Once to every game first, so that no sweep measured pays for starting the games' threads.
    ScopedProcess scope(caller_);
    sptr<IZelManager> manager = Manager();
    return manager != nullptr && Sweep(manager, kGames, 1) ? std::string() : "not every callback was delivered";
}

bool BenchDevice::Sweep(const sptr<IZelManager>& manager, int games, uint32_t fps)
{
    const uint64_t mark = delivered_.Count() + static_cast<uint64_t>(games) * kCallbacksPerGame;
    for (int game = 0; game < games; ++game) {
        manager->SetGameFpsForThermalControl(GameBundle(game), fps);
    }
    return delivered_.WaitFor(mark);
}

bool BenchDevice::Register(int game)
{
    ScopedProcess scope(device_.AppProcess(GameBundle(game)));
    sptr<IZelManager> manager = Manager();
    sptr<CountingCallback> callback = new CountingCallback(delivered_);
    sptr<Vantel::IZelCallbackInterface> registered = callback;
    if (manager == nullptr || manager->RegisterGameFpsListener(registered) != 0) {
        return false;
    }
    callbacks_.push_back(callback);
    return true;
}

// One enter and one exit of an interruptible scene, until the arbiter has both notices.
void MeasureScene(benchmark::State& state, BenchDevice& device, const sptr<IZelManager>& manager)
{
    MeasureLatency(state, [&] {
        const uint64_t mark = device.Refresh().Count() + 2;
        manager->SetScene(kScenePackage, kScene, 1);
        manager->SetScene(kScenePackage, kScene, 0);
        return device.Refresh().WaitFor(mark);
    });
}

void SceneEnterExitDirect(benchmark::State& state)
{
    BenchDevice& device = BenchDevice::Get();
    if (!device.Failure().empty()) {
        state.SkipWithError(device.Failure().c_str());
        return;
    }
    // In the service's own process the manager is the service object itself.
    ScopedProcess scope(device.Device().ServiceProcess());
    sptr<IZelManager> service = Manager();
    if (service == nullptr || service->AsObject()->IsProxyObject()) {
        state.SkipWithError("the service object is not at hand");
        return;
    }
    MeasureScene(state, device, service);
}

void SceneEnterExitThroughProxy(benchmark::State& state)
{
    BenchDevice& device = BenchDevice::Get();
    if (!device.Failure().empty()) {
        state.SkipWithError(device.Failure().c_str());
        return;
    }
    ScopedProcess scope(device.Caller());
    sptr<IZelManager> manager = Manager();
    if (manager == nullptr || !manager->AsObject()->IsProxyObject()) {
        state.SkipWithError("no proxy of the service");
        return;
    }
    MeasureScene(state, device, manager);
}

// Sweeps over the first state.range(0) games, each with a target other than the last one's.
void GameFpsFanOut(benchmark::State& state)
{
    const int games = static_cast<int>(state.range(0));
    BenchDevice& device = BenchDevice::Get();
    if (!device.Failure().empty()) {
        state.SkipWithError(device.Failure().c_str());
        return;
    }
    ScopedProcess scope(device.Caller());
    const sptr<IZelManager> manager = Manager();
    const auto callbacks = static_cast<int64_t>(games) * kCallbacksPerGame;
    LatencySamples perCallback;
    LatencySamples perSweep;
    uint32_t fps = 30;
    for (auto _ : state) {
        fps = fps == 30 ? 60 : 30;
        const auto start = LatencySamples::Clock::now();
        if (manager == nullptr || !device.Sweep(manager, games, fps)) {
            state.SkipWithError("not every callback was delivered");
            return;
        }
        const auto elapsed = LatencySamples::Clock::now() - start;
        perSweep.Add(elapsed);
        perCallback.Add(elapsed / callbacks);
    }
    perCallback.Report(state);
    perSweep.Report(state, "sweep_");
}

BENCHMARK(SceneEnterExitDirect)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(SceneEnterExitThroughProxy)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(GameFpsFanOut)->Arg(100)->Arg(kGames)->MinTime(2.0)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Tarvo::Bench
