// The socket transport beside its floor, in one program and run: a synchronous round trip with a
// 64-byte parcel to another process, and one-way requests per second, against a raw SEQPACKET echo
// and raw one-way messages (socket_floor_bench.cpp, linked into this program too).
//
// The other process is this program again (ZEL_BENCH_ECHO names the run folder): it serves an echo
// object as the context object. For the one-CPU figures run the whole program under `taskset -c 0`.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <string>

#include "bench_measure.h"
#include "bench_requests.h"
#include "floor_sockets.h"
#include "ipc_object_stub.h"
#include "ipc_skeleton.h"
#include "ipc_transport.h"
#include "process_launcher.h"
#include "process_registry.h"
#include "socket_transport.h"
#include "virtual_process.h"

namespace Tarvo::Bench {
namespace {
constexpr const char* kEchoVariable = "ZEL_BENCH_ECHO";
constexpr uint32_t kEcho = 1;
constexpr uint32_t kCount = 2;
constexpr uint32_t kDone = 3;
constexpr int32_t kOneWayBatch = 10000;

// Answers kEcho with the data it got; counts kCount and tells the object of kDone when a batch is in.
class EchoStub : public IPCObjectStub {
public:
    EchoStub() : IPCObjectStub(u"bench.Echo") {}
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        if (code == kEcho) {
            return reply.WriteBuffer(data.GetData(), data.GetDataSize()) ? 0 : -1;
        }
        if (code == kDone) {
            done_ = data.ReadRemoteObject();
            count_ = 0;
            return 0;
        }
        if (code == kCount && ++count_ == kOneWayBatch && done_ != nullptr) {
            count_ = 0;
            MessageParcel note;
            MessageParcel none;
            MessageOption oneWay(MessageOption::TF_ASYNC);
            done_->SendRequest(kDone, note, none, oneWay);
        }
        return code == kCount ? 0 : IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }

private:
    sptr<IRemoteObject> done_;
    int32_t count_ = 0;  // one-way requests to one object come one at a time
};

// Woken by the echo process once it has handled a whole batch of one-way requests.
class BatchDone : public IPCObjectStub {
public:
    BatchDone() : IPCObjectStub(u"bench.Done") {}
    int OnRemoteRequest(uint32_t, MessageParcel&, MessageParcel&, MessageOption&) override
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++batches_;
        done_.notify_all();
        return 0;
    }
    void WaitFor(uint64_t batches)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        done_.wait(lock, [&] { return batches_ >= batches; });
    }

private:
    std::mutex mutex_;
    std::condition_variable done_;
    uint64_t batches_ = 0;
};

ProcessIdentity Native(pid_t pid, const char* name)
{
    return {static_cast<int32_t>(pid), 0, 1u << 28, 1u << 28, name};
}

bool Attach(const std::string& runDir)
{
    std::vector<ProcessIdentity> mine = ProcessRegistry(runDir + "/registry").IdentitiesOf(getpid());
    return !mine.empty() && VirtualProcess::SetHostIdentity(mine.front()) &&
           IPCTransport::Install(new SocketTransport({runDir}));
}

[[noreturn]] void ServeEcho(const std::string& runDir)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (!Attach(runDir) || !IPCSkeleton::SetContextObject(sptr<IRemoteObject>(new EchoStub()))) {
        _exit(1);
    }
    std::puts("ready");
    std::fflush(stdout);
    for (;;) {
        pause();
    }
}

// This process and an echo process, over the socket transport; set up at first use.
class EchoPeer {
public:
    static EchoPeer& Get()
    {
        static EchoPeer* peer = new EchoPeer();
        return *peer;
    }
    const sptr<IRemoteObject>& Echo() const { return echo_; }

private:
    EchoPeer()
    {
        char pattern[] = "/tmp/zel_bench.XXXXXX";
        if (mkdtemp(pattern) == nullptr) {
            return;
        }
        runDir_ = pattern;
        // The echo process is stopped at exit (the launcher); its run folder goes after it.
        static std::string removed;
        removed = runDir_;
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(removed, ignored);
        });
        std::filesystem::create_directories(runDir_ + "/sock");
        std::filesystem::create_directories(runDir_ + "/registry");
        if (!Start()) {
            echo_ = nullptr;
        }
    }
    bool Start();

    std::string runDir_;
    std::unique_ptr<Emu::ChildProcess> child_;
    sptr<IRemoteObject> echo_;
};

bool EchoPeer::Start()
{
    ProcessRegistry registry(runDir_ + "/registry");
    std::string error;
    int ready[2];
    if (!registry.Register(getpid(), {Native(getpid(), "bench")}, &error) || pipe2(ready, O_CLOEXEC) != 0) {
        return false;
    }
    Emu::LaunchPlan plan;
    plan.path = "/proc/self/exe";
    plan.argv = {"zel_bench_socket"};
    plan.env = {std::string(kEchoVariable) + "=" + runDir_};
    plan.fds = {{STDOUT_FILENO, ready[1]}, {STDERR_FILENO, STDERR_FILENO}};
    plan.registerChild = [&](pid_t child) { return registry.Register(child, {Native(child, "echo")}, &error); };
    child_ = Emu::ProcessLauncher::Start(plan, &error);
    close(ready[1]);
    char line[8] = {};
    const bool started = child_ != nullptr && read(ready[0], line, sizeof(line)) > 0 && Attach(runDir_);
    close(ready[0]);
    echo_ = started ? IPCSkeleton::GetContextObject() : nullptr;
    return echo_ != nullptr;
}

void SocketTransportRoundTrip(benchmark::State& state)
{
    const sptr<IRemoteObject>& echo = EchoPeer::Get().Echo();
    if (echo == nullptr) {
        state.SkipWithError("no echo process");
        return;
    }
    MeasureLatency(state, [&] { return SendPayload(echo, kEcho, false); });
}

// One-way requests to the echo process, which tells a BatchDone of ours when a batch is in.
class OneWayToEcho {
public:
    OneWayToEcho()
    {
        MessageParcel hello;
        MessageParcel reply;
        MessageOption sync;
        ok_ = echo_ != nullptr && hello.WriteRemoteObject(done_) && echo_->SendRequest(kDone, hello, reply, sync) == 0;
    }
    bool Ok() const { return ok_; }
    bool SendBatch(const FloorMessage&)
    {
        for (int32_t i = 0; i < kOneWayBatch; ++i) {
            if (!SendPayload(echo_, kCount, true)) {
                return false;
            }
        }
        done_->WaitFor(++batches_);
        return true;
    }

private:
    const sptr<IRemoteObject> echo_ = EchoPeer::Get().Echo();
    const sptr<BatchDone> done_ = new BatchDone();
    uint64_t batches_ = 0;
    bool ok_ = false;
};

void SocketTransportOneWay(benchmark::State& state)
{
    OneWayToEcho sink;
    MeasureOneWay(state, sink, kOneWayBatch);
}

BENCHMARK(SocketTransportRoundTrip)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(SocketTransportOneWay)->UseRealTime()->Unit(benchmark::kMillisecond);
}  // namespace
}  // namespace Tarvo::Bench

int main(int argc, char** argv)
{
    if (const char* runDir = std::getenv(Tarvo::Bench::kEchoVariable)) {
        Tarvo::Bench::ServeEcho(runDir);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
