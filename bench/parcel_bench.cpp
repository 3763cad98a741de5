// The manager's request layouts and the callback's, written into a parcel and read back as the stub
// reads them, beside a memcpy of the same number of bytes there and back; and a call through the
// callback's proxy to a stub of the same process (no transport: a direct call).

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "bench_measure.h"
#include "i_zel_manager.h"
#include "message_parcel.h"
#include "zel_callback_proxy.h"
#include "zel_callback_stub.h"

namespace Tarvo::Bench {
namespace {
using Vantel::IZelCallbackInterface;
using Vantel::IZelManager;
constexpr int kBatch = 100;
const std::string kPackage = "com.example.racer";

class CountingCallback : public Vantel::ZelCallbackStub {
public:
    int32_t OnGameFpsChange(uint32_t targetFps) override
    {
        delivered_.fetch_add(targetFps != 0 ? 1 : 0, std::memory_order_relaxed);
        return 0;
    }
    uint64_t Delivered() const { return delivered_.load(std::memory_order_relaxed); }

private:
    std::atomic<uint64_t> delivered_{0};
};

// One request layout: what the proxy writes and what the stub reads back.
struct Layout {
    std::function<bool(MessageParcel&)> write;
    std::function<bool(MessageParcel&)> read;
};

bool TokenIs(MessageParcel& data, const std::u16string& descriptor)
{
    return data.ReadInterfaceToken() == descriptor;
}

Layout SceneLayout()
{
    return {[](MessageParcel& data) {
                return data.WriteInterfaceToken(IZelManager::GetDescriptor()) && data.WriteString(kPackage) &&
                       data.WriteString("APP_LIST_FLING") && data.WriteUint32(1);
            },
            [](MessageParcel& data) {
                std::string pkg;
                std::string scene;
                uint32_t state = 0;
                return TokenIs(data, IZelManager::GetDescriptor()) && data.ReadString(pkg) && data.ReadString(scene) &&
                       data.ReadUint32(state);
            }};
}

Layout ResolutionLayout()
{
    return {[](MessageParcel& data) {
                return data.WriteInterfaceToken(IZelManager::GetDescriptor()) && data.WriteInt32(2) &&
                       data.WriteInt32(1);
            },
            [](MessageParcel& data) {
                int32_t mode = 0;
                int32_t flag = 0;
                return TokenIs(data, IZelManager::GetDescriptor()) && data.ReadInt32(mode) && data.ReadInt32(flag);
            }};
}

Layout ThermalLayout()
{
    return {[](MessageParcel& data) {
                return data.WriteInterfaceToken(IZelManager::GetDescriptor()) &&
                       data.WriteUInt32Vector({100, 101, 102}) && data.WriteUInt32Vector({1, 90, 3});
            },
            [](MessageParcel& data) {
                std::vector<uint32_t> keys;
                std::vector<uint32_t> values;
                return TokenIs(data, IZelManager::GetDescriptor()) && data.ReadUInt32Vector(&keys) &&
                       data.ReadUInt32Vector(&values) && keys.size() == values.size();
            }};
}

Layout RegisterLayout()
{
    static const sptr<IRemoteObject> callback = new CountingCallback();
    return {[](MessageParcel& data) {
                return data.WriteInterfaceToken(IZelManager::GetDescriptor()) && data.WriteRemoteObject(callback);
            },
            [](MessageParcel& data) {
                return TokenIs(data, IZelManager::GetDescriptor()) && data.ReadRemoteObject() != nullptr;
            }};
}

Layout GameFpsLayout()
{
    return {[](MessageParcel& data) {
                return data.WriteInterfaceToken(IZelManager::GetDescriptor()) && data.WriteString(kPackage) &&
                       data.WriteUint32(60);
            },
            [](MessageParcel& data) {
                std::string pkg;
                uint32_t fps = 0;
                return TokenIs(data, IZelManager::GetDescriptor()) && data.ReadString(pkg) && data.ReadUint32(fps);
            }};
}

Layout CallbackLayout()
{
    return {[](MessageParcel& data) {
                return data.WriteInterfaceToken(IZelCallbackInterface::GetDescriptor()) && data.WriteUint32(60);
            },
            [](MessageParcel& data) {
                uint32_t fps = 0;
                return TokenIs(data, IZelCallbackInterface::GetDescriptor()) && data.ReadUint32(fps);
            }};
}

void ParcelWriteRead(benchmark::State& state, Layout (*make)())
{
    const Layout layout = make();
    MeasureLatency(
        state,
        [&] {
            MessageParcel data;
            return layout.write(data) && layout.read(data);
        },
        kBatch);
}

// The same number of bytes copied in and out again.
void FloorMemcpy(benchmark::State& state, Layout (*make)())
{
    MessageParcel sample;
    if (!make().write(sample)) {
        state.SkipWithError("cannot write the layout");
        return;
    }
    const std::vector<uint8_t> source(sample.GetData(), sample.GetData() + sample.GetDataSize());
    std::vector<uint8_t> wire(source.size());
    std::vector<uint8_t> back(source.size());
    MeasureLatency(
        state,
        [&] {
            std::memcpy(wire.data(), source.data(), source.size());
            benchmark::ClobberMemory();
            std::memcpy(back.data(), wire.data(), wire.size());
            benchmark::DoNotOptimize(back.data());
            return true;
        },
        kBatch);
}

void LocalCallThroughProxy(benchmark::State& state)
{
    sptr<CountingCallback> stub = new CountingCallback();
    sptr<Vantel::ZelCallbackProxy> proxy = new Vantel::ZelCallbackProxy(stub->AsObject());
    MeasureLatency(
        state, [&] { return proxy->OnGameFpsChange(60) == 0; }, kBatch);
    if (stub->Delivered() != static_cast<uint64_t>(state.iterations()) * kBatch) {
        state.SkipWithError("a call did not reach the stub");
    }
}

#define ZEL_PARCEL_BENCH(name, layout)                                                             \
    BENCHMARK_CAPTURE(ParcelWriteRead, name, layout)->UseRealTime()->Unit(benchmark::kNanosecond); \
    BENCHMARK_CAPTURE(FloorMemcpy, name, layout)->UseRealTime()->Unit(benchmark::kNanosecond)

ZEL_PARCEL_BENCH(SetScene, SceneLayout);
ZEL_PARCEL_BENCH(ChangeResolutionMode, ResolutionLayout);
ZEL_PARCEL_BENCH(SetThermalPolicy, ThermalLayout);
ZEL_PARCEL_BENCH(RegisterGameFpsListener, RegisterLayout);
ZEL_PARCEL_BENCH(SetGameFpsForThermalControl, GameFpsLayout);
ZEL_PARCEL_BENCH(OnGameFpsChange, CallbackLayout);
BENCHMARK(LocalCallThroughProxy)->UseRealTime()->Unit(benchmark::kNanosecond);

}  // namespace
}  // namespace Tarvo::Bench
