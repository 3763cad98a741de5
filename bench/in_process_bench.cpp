// The in-process transport beside its floors (hand_off_floor_bench.cpp, in this program too): a
// synchronous request with 64 bytes to an object of another emulated process and the reply, and
// one-way requests per second to such an object.

#include <benchmark/benchmark.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <memory>

#include "bench_measure.h"
#include "bench_requests.h"
#include "floor_sockets.h"
#include "ipc_object_stub.h"
#include "virtual_process.h"

namespace Tarvo::Bench {
namespace {
constexpr uint32_t kEcho = 1;
constexpr uint32_t kCount = 2;
constexpr uint64_t kOneWayBatch = 10000;

// Answers kEcho with the data it got; counts kCount and signals an eventfd once a batch is in.
class EchoStub : public IPCObjectStub {
public:
    explicit EchoStub(int batchDone) : IPCObjectStub(u"bench.Echo"), batchDone_(batchDone) {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        if (code == kEcho) {
            return reply.WriteBuffer(data.GetData(), data.GetDataSize()) ? 0 : -1;
        }
        if (code != kCount) {
            return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
        }
        if (count_.fetch_add(1, std::memory_order_relaxed) + 1 == kOneWayBatch) {
            count_.store(0, std::memory_order_relaxed);
            const uint64_t one = 1;
            return write(batchDone_, &one, sizeof(one)) == sizeof(one) ? 0 : -1;
        }
        return 0;
    }

private:
    const int batchDone_;
    std::atomic<uint64_t> count_{0};  // one-way requests to one object come one at a time
};

ProcessIdentity Identity(int32_t pid, const char* name)
{
    return {pid, pid + 10000, 0x10000000u + static_cast<uint32_t>(pid), static_cast<uint64_t>(pid), name};
}

// A caller process and a server process with an echo object; the caller's proxy of it.
class ProcessPair {
public:
    ProcessPair()
    {
        {
            ScopedProcess scope(server_);
            stub_ = new EchoStub(batchDone_);
        }
        MessageParcel parcel;
        if (batchDone_ >= 0 && parcel.WriteRemoteObject(stub_)) {
            ScopedProcess scope(caller_);
            proxy_ = parcel.ReadRemoteObject();
        }
    }
    ~ProcessPair()
    {
        {
            ScopedProcess scope(caller_);
            proxy_ = nullptr;
        }
        if (batchDone_ >= 0) {
            close(batchDone_);
        }
    }
    ProcessPair(const ProcessPair&) = delete;
    ProcessPair& operator=(const ProcessPair&) = delete;

    bool Ok() const { return proxy_ != nullptr && proxy_->IsProxyObject(); }
    const std::shared_ptr<VirtualProcess>& Caller() const { return caller_; }
    const sptr<IRemoteObject>& Proxy() const { return proxy_; }
    // kOneWayBatch one-way requests from the caller's process, until the server has them all.
    bool SendBatch(const FloorMessage&) const
    {
        ScopedProcess scope(caller_);
        for (uint64_t i = 0; i < kOneWayBatch; ++i) {
            if (!SendPayload(proxy_, kCount, true)) {
                return false;
            }
        }
        uint64_t batches = 0;
        return read(batchDone_, &batches, sizeof(batches)) == sizeof(batches);
    }

private:
    const std::shared_ptr<VirtualProcess> caller_ = VirtualProcess::Create(Identity(3001, "bench.caller"));
    const std::shared_ptr<VirtualProcess> server_ = VirtualProcess::Create(Identity(3002, "bench.server"));
    const int batchDone_ = eventfd(0, EFD_CLOEXEC);
    sptr<EchoStub> stub_;
    sptr<IRemoteObject> proxy_;
};

void InProcessRoundTrip(benchmark::State& state)
{
    ProcessPair pair;
    if (!pair.Ok()) {
        state.SkipWithError("cannot set up the processes");
        return;
    }
    ScopedProcess scope(pair.Caller());
    MeasureLatency(state, [&] { return SendPayload(pair.Proxy(), kEcho, false); });
}

void InProcessOneWay(benchmark::State& state)
{
    ProcessPair pair;
    MeasureOneWay(state, pair, kOneWayBatch);
}

BENCHMARK(InProcessRoundTrip)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(InProcessOneWay)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Tarvo::Bench
