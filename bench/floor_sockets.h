#ifndef ZEL_BENCH_FLOOR_SOCKETS_H
#define ZEL_BENCH_FLOOR_SOCKETS_H

// Floors for the transports: what two threads pay to hand 64 bytes to each other over a raw
// AF_UNIX SOCK_SEQPACKET pair (the socket transport's floor), to wake each other through
// eventfds, and to pass messages one way through a locked queue (the in-process transport's
// floors). Nothing else: no framing, no parcels, no lookups.
// The transport benchmarks reuse the latency samples and the CPU pinning to report alike.

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>
#include <stdint.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Tarvo::Bench {

constexpr size_t kFloorMessageSize = 64;
using FloorMessage = std::array<char, kFloorMessageSize>;

// One duration per round trip; reported as the median and the 99th percentile in microseconds.
class LatencySamples {
public:
    using Clock = std::chrono::steady_clock;

    void Reserve(size_t count) { samples_.reserve(count); }
    void Add(Clock::duration elapsed) { samples_.push_back(elapsed); }
    // As `prefix`p50_us and `prefix`p99_us.
    void Report(benchmark::State& state, const std::string& prefix = "")
    {
        if (samples_.empty()) {
            return;
        }
        std::sort(samples_.begin(), samples_.end());
        state.counters[prefix + "p50_us"] = Micros(samples_[samples_.size() / 2]);
        state.counters[prefix + "p99_us"] = Micros(samples_[samples_.size() * 99 / 100]);
    }

private:
    static double Micros(Clock::duration elapsed) { return std::chrono::duration<double, std::micro>(elapsed).count(); }
    std::vector<Clock::duration> samples_;
};

// Pins the calling thread to one CPU while it lives, then gives back the CPUs it had.
class ScopedPin {
public:
    explicit ScopedPin(std::optional<int> cpu)
    {
        if (!cpu || pthread_getaffinity_np(pthread_self(), sizeof(saved_), &saved_) != 0) {
            return;
        }
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(*cpu, &one);
        pinned_ = pthread_setaffinity_np(pthread_self(), sizeof(one), &one) == 0;
    }
    ~ScopedPin()
    {
        if (pinned_) {
            pthread_setaffinity_np(pthread_self(), sizeof(saved_), &saved_);
        }
    }
    ScopedPin(const ScopedPin&) = delete;
    ScopedPin& operator=(const ScopedPin&) = delete;
    bool Pinned() const { return pinned_; }

private:
    cpu_set_t saved_{};
    bool pinned_ = false;
};

inline bool SeqpacketRoundTrip(int fd, FloorMessage& message)
{
    return send(fd, message.data(), message.size(), 0) == static_cast<ssize_t>(message.size()) &&
           recv(fd, message.data(), message.size(), 0) == static_cast<ssize_t>(message.size());
}

// Sends `count` copies of `message`; false if one could not be sent whole.
inline bool SendMessages(int fd, const FloorMessage& message, uint64_t count)
{
    for (uint64_t i = 0; i < count; ++i) {
        if (send(fd, message.data(), message.size(), 0) != static_cast<ssize_t>(message.size())) {
            return false;
        }
    }
    return true;
}

// Sends every message straight back until the other end closes.
inline void EchoUntilClosed(int fd)
{
    FloorMessage message{};
    ssize_t n = 0;
    while ((n = recv(fd, message.data(), message.size(), 0)) > 0 && send(fd, message.data(), n, 0) == n) {
    }
}

// A thread on the far end of a SEQPACKET pair that sends every message straight back.
class SeqpacketEcho {
public:
    explicit SeqpacketEcho(std::optional<int> cpu)
    {
        int fds[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds) != 0) {
            return;
        }
        near_ = fds[0];
        far_ = fds[1];
        thread_ = std::thread([this, cpu] { Echo(cpu); });
    }
    ~SeqpacketEcho()
    {
        if (near_ >= 0) {
            close(near_);  // the echo thread sees end of file
            thread_.join();
            close(far_);
        }
    }
    SeqpacketEcho(const SeqpacketEcho&) = delete;
    SeqpacketEcho& operator=(const SeqpacketEcho&) = delete;

    bool Ok() const { return near_ >= 0; }
    bool RoundTrip(FloorMessage& message) { return SeqpacketRoundTrip(near_, message); }

private:
    void Echo(std::optional<int> cpu)
    {
        ScopedPin pin(cpu);
        EchoUntilClosed(far_);
    }

    int near_ = -1;
    int far_ = -1;
    std::thread thread_;
};

// A child process on the far end of a new SEQPACKET pair, running `body` on its end; it sees end
// of file when this side goes, and is waited for.
class SeqpacketChild {
public:
    template <class Body>
    explicit SeqpacketChild(Body body)
    {
        int fds[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds) != 0) {
            return;
        }
        child_ = fork();
        if (child_ == 0) {
            // Only system calls from here: the parent has threads.
            close(fds[0]);
            body(fds[1]);
            _exit(0);
        }
        close(fds[1]);
        near_ = child_ > 0 ? fds[0] : -1;
        if (child_ < 0) {
            close(fds[0]);
        }
    }
    ~SeqpacketChild()
    {
        if (near_ >= 0) {
            close(near_);
            waitpid(child_, nullptr, 0);
        }
    }
    SeqpacketChild(const SeqpacketChild&) = delete;
    SeqpacketChild& operator=(const SeqpacketChild&) = delete;

    bool Ok() const { return near_ >= 0; }
    int Fd() const { return near_; }

private:
    pid_t child_ = -1;
    int near_ = -1;
};

// The same echo in a child process: what a round trip between two processes costs at least (on one
// CPU each one switches address spaces, which two threads of one process do not).
class SeqpacketProcessEcho {
public:
    explicit SeqpacketProcessEcho(std::optional<int> cpu)
        : child_([cpu](int fd) {
              if (cpu) {
                  cpu_set_t one;
                  CPU_ZERO(&one);
                  CPU_SET(*cpu, &one);
                  sched_setaffinity(0, sizeof(one), &one);
              }
              EchoUntilClosed(fd);
          })
    {
    }

    bool Ok() const { return child_.Ok(); }
    bool RoundTrip(FloorMessage& message) { return SeqpacketRoundTrip(child_.Fd(), message); }

private:
    SeqpacketChild child_;
};

// One sender, one receiving thread on a SEQPACKET pair: the receiver says when a batch is in.
class SeqpacketSink {
public:
    explicit SeqpacketSink(uint64_t batch) : batch_(batch), done_(eventfd(0, EFD_CLOEXEC))
    {
        int fds[2];
        if (done_ < 0 || socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds) != 0) {
            return;
        }
        near_ = fds[0];
        far_ = fds[1];
        thread_ = std::thread([this] { Receive(); });
    }
    ~SeqpacketSink()
    {
        if (near_ >= 0) {
            close(near_);
            thread_.join();
            close(far_);
        }
        if (done_ >= 0) {
            close(done_);
        }
    }
    SeqpacketSink(const SeqpacketSink&) = delete;
    SeqpacketSink& operator=(const SeqpacketSink&) = delete;

    bool Ok() const { return near_ >= 0; }
    // Sends a batch of messages and returns once the receiver has read every one of them.
    bool SendBatch(const FloorMessage& message)
    {
        uint64_t batches = 0;
        return SendMessages(near_, message, batch_) && read(done_, &batches, sizeof(batches)) == sizeof(batches);
    }

private:
    void Receive()
    {
        FloorMessage message{};
        uint64_t received = 0;
        while (recv(far_, message.data(), message.size(), 0) > 0) {
            if (++received % batch_ == 0) {
                const uint64_t one = 1;
                if (write(done_, &one, sizeof(one)) != sizeof(one)) {
                    return;
                }
            }
        }
    }

    const uint64_t batch_;
    const int done_;
    int near_ = -1;
    int far_ = -1;
    std::thread thread_;
};

// One-way messages to a child process, which answers once a whole batch is in: what a burst of
// one-way messages between two processes costs at least.
class SeqpacketProcessSink {
public:
    explicit SeqpacketProcessSink(uint64_t batch) : batch_(batch), child_([batch](int fd) { Receive(fd, batch); }) {}

    bool Ok() const { return child_.Ok(); }
    bool SendBatch(const FloorMessage& message)
    {
        char done = 0;
        return SendMessages(child_.Fd(), message, batch_) && recv(child_.Fd(), &done, sizeof(done), 0) == sizeof(done);
    }

private:
    static void Receive(int fd, uint64_t batch)
    {
        FloorMessage message{};
        uint64_t received = 0;
        while (recv(fd, message.data(), message.size(), 0) > 0) {
            const char done = 1;
            if (++received % batch == 0 && send(fd, &done, sizeof(done), 0) != sizeof(done)) {
                return;
            }
        }
    }

    const uint64_t batch_;
    SeqpacketChild child_;
};

// Two threads waking each other through a pair of eventfds.
class EventfdPingPong {
public:
    explicit EventfdPingPong(std::optional<int> cpu) : ping_(eventfd(0, EFD_CLOEXEC)), pong_(eventfd(0, EFD_CLOEXEC))
    {
        if (Ok()) {
            thread_ = std::thread([this, cpu] { Answer(cpu); });
        }
    }
    ~EventfdPingPong()
    {
        if (Ok()) {
            stop_.store(true, std::memory_order_release);
            Signal(ping_);
            thread_.join();
        }
        for (int fd : {ping_, pong_}) {
            if (fd >= 0) {
                close(fd);
            }
        }
    }
    EventfdPingPong(const EventfdPingPong&) = delete;
    EventfdPingPong& operator=(const EventfdPingPong&) = delete;

    bool Ok() const { return ping_ >= 0 && pong_ >= 0; }
    bool RoundTrip() { return Signal(ping_) && Await(pong_); }

private:
    static bool Signal(int fd)
    {
        const uint64_t one = 1;
        return write(fd, &one, sizeof(one)) == sizeof(one);
    }
    static bool Await(int fd)
    {
        uint64_t count = 0;
        return read(fd, &count, sizeof(count)) == sizeof(count);
    }
    void Answer(std::optional<int> cpu)
    {
        ScopedPin pin(cpu);
        while (Await(ping_) && !stop_.load(std::memory_order_acquire)) {
            Signal(pong_);
        }
    }

    const int ping_;
    const int pong_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

// One sender, one receiving thread: messages go through a locked queue, and the receiver is woken
// through an eventfd only when it may be asleep (the queue was empty). It says when a batch is in.
class QueueSink {
public:
    explicit QueueSink(uint64_t batch) : batch_(batch), wake_(eventfd(0, EFD_CLOEXEC)), done_(eventfd(0, EFD_CLOEXEC))
    {
        if (Ok()) {
            thread_ = std::thread([this] { Receive(); });
        }
    }
    ~QueueSink()
    {
        if (Ok()) {
            Push(FloorMessage{}, true);
            thread_.join();
        }
        for (int fd : {wake_, done_}) {
            if (fd >= 0) {
                close(fd);
            }
        }
    }
    QueueSink(const QueueSink&) = delete;
    QueueSink& operator=(const QueueSink&) = delete;

    bool Ok() const { return wake_ >= 0 && done_ >= 0; }
    bool SendBatch(const FloorMessage& message)
    {
        for (uint64_t i = 0; i < batch_; ++i) {
            if (!Push(message, false)) {
                return false;
            }
        }
        uint64_t batches = 0;
        return read(done_, &batches, sizeof(batches)) == sizeof(batches);
    }

private:
    struct Item {
        FloorMessage message;
        bool stop;
    };
    bool Push(const FloorMessage& message, bool stop)
    {
        bool wasEmpty = false;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            wasEmpty = queue_.empty();
            queue_.push_back(Item{message, stop});
        }
        const uint64_t one = 1;
        return !wasEmpty || write(wake_, &one, sizeof(one)) == sizeof(one);
    }
    void Receive()
    {
        uint64_t received = 0;
        uint64_t woken = 0;
        while (read(wake_, &woken, sizeof(woken)) == sizeof(woken)) {
            std::unique_lock<std::mutex> lock(mutex_);
            while (!queue_.empty()) {
                Item item = queue_.front();
                queue_.pop_front();
                if (item.stop) {
                    return;
                }
                lock.unlock();
                benchmark::DoNotOptimize(item.message);
                if (++received % batch_ == 0) {
                    const uint64_t one = 1;
                    if (write(done_, &one, sizeof(one)) != sizeof(one)) {
                        return;
                    }
                }
                lock.lock();
            }
        }
    }

    const uint64_t batch_;
    const int wake_;
    const int done_;
    std::mutex mutex_;
    std::deque<Item> queue_;
    std::thread thread_;
};

}  // namespace Tarvo::Bench

#endif  // ZEL_BENCH_FLOOR_SOCKETS_H
