#ifndef TARVO_UTILS_WORK_TRACKER_H
#define TARVO_UTILS_WORK_TRACKER_H

// Counts platform work in flight (queued IPC requests, due event-runner tasks, queued deliveries)
// so that a driver of virtual time can wait until the whole device is quiet.
//
// Contract: every Begin() is matched by exactly one End(), possibly on another thread. Work that
// is queued counts from the moment it is queued, so "quiet" never misses work that is on its way.
// Once SharedTimePage is attached the count is the whole device's, kept per process (what it began
// minus what it ended, so work may begin in one process and end in another); Forget(pid) clears a
// dead process's part.

#include <chrono>
#include <cstdint>

namespace Tarvo {

class WorkTracker {
public:
    static WorkTracker& GetInstance();

    void Begin();
    void End();
    // Work that will end in another process (a one-way request on its way there), counted in
    // that process's share so that it stays counted if this one dies, and goes if that one does.
    void BeginFor(int32_t pid);
    void EndFor(int32_t pid);
    int64_t InFlight() const;
    void Forget(int32_t pid);

    // Waits until no work is in flight; false if meanwhile nothing moved on (no work began or ended,
    // no sequenced turn was taken) for `stallLimit` of real time: a hang, told from a slow machine
    // by the absence of progress rather than by the time the whole wait took.
    bool WaitQuiet(std::chrono::milliseconds stallLimit);

    // Begin() now, End() when the token dies; movable so it can ride along with queued work.
    class Token {
    public:
        Token();
        // A token for work already begun, by BeginFor() in another process.
        static Token Adopt();
        Token(Token&& other) noexcept;
        Token& operator=(Token&& other) noexcept;
        Token(const Token&) = delete;
        Token& operator=(const Token&) = delete;
        ~Token();

    private:
        struct Adopted {};
        explicit Token(Adopted) : active_(true) {}
        bool active_;
    };

private:
    WorkTracker() = default;
};

}  // namespace Tarvo

#endif  // TARVO_UTILS_WORK_TRACKER_H
