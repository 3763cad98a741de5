#ifndef TARVO_UTILS_TIME_PAGE_LAYOUT_H
#define TARVO_UTILS_TIME_PAGE_LAYOUT_H

// The state of virtual time as it lies in memory: in a private mapping for one process, or in the
// file every process of a device maps. No pointers, fixed size, the same for every process built
// from this tree.
//
// Every change a process makes under the mutex commits with one aligned store (an index, a pid), so
// a process killed inside the lock leaves either the old state or the new one; the next locker is
// told by the robust mutex (EOWNERDEAD) and carries on. The counts of work in flight change without
// the mutex, each with one atomic add.

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace Tarvo::TimePage {

constexpr uint64_t kMagic = 0x314d495456524154;  // "TARVTIM1", little-endian
constexpr uint32_t kVersion = 3;
constexpr uint64_t kLineCapacity = 65536;
constexpr uint32_t kMaxShares = 256;

struct Header {
    std::atomic<uint64_t> magic;
    uint32_t version;
    uint32_t reserved;
    uint64_t size;
};

// A reserved turn; pid 0 marks it cancelled while it waits to leave the front.
struct Slot {
    uint64_t turn;
    int32_t pid;
    int32_t reserved;
};

// One process's part of the work in flight: what it began minus what it ended. Claimed and freed
// under the mutex; the owner counts in it without the lock.
struct Share {
    std::atomic<int32_t> pid;
    int32_t reserved;
    std::atomic<int64_t> count;
};

struct Layout {
    Header header;
    pthread_mutex_t mutex;
    std::atomic<int64_t> clockMs;
    // Futex words, bumped when a waiter may have something to see.
    std::atomic<uint32_t> lineChanged;
    std::atomic<uint32_t> quietChanged;
    // The line: slots[first .. end) modulo the capacity, sorted by turn.
    uint64_t first;
    uint64_t end;
    uint64_t nextBack;
    uint64_t nextFront;
    int32_t holder;
    int32_t reserved;
    uint64_t taken;
    // Bumped before every change of a count, so that a reader can tell a consistent sum of the
    // shares from one that raced a change.
    std::atomic<uint64_t> changes;
    std::atomic<uint32_t> sharesUsed;
    // Threads waiting for quiet: nobody is woken when nobody waits (a dead waiter costs one wake-up).
    std::atomic<uint32_t> quietWaiters;
    Share shares[kMaxShares];
    Slot slots[kLineCapacity];
};

static_assert(std::atomic<int64_t>::is_always_lock_free && std::atomic<uint32_t>::is_always_lock_free &&
              std::atomic<uint64_t>::is_always_lock_free && std::atomic<int32_t>::is_always_lock_free);
static_assert(sizeof(std::atomic<uint32_t>) == sizeof(uint32_t));

// The page this process uses: the attached one, else a private one.
Layout& Current();
// Fills a zeroed layout (the header last).
void Initialise(Layout& page);
// This process's pid, kept across calls (and corrected in a forked child).
int32_t OwnPid();
// Prints the reason on stderr and aborts: the device cannot go on with its time broken.
[[noreturn]] void Fail(const char* what);

// The page's mutex; the state a holder that died left is taken over as it stands.
class Lock {
public:
    explicit Lock(Layout& page);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    Layout& page_;
};

// Waits until `word` no longer holds `seen` (or spuriously); timeoutMs < 0 waits without end.
// False on a time-out.
bool WaitChange(std::atomic<uint32_t>& word, uint32_t seen, int64_t timeoutMs);
// Bumps the word; call WakeAll after the lock is released.
void Bump(std::atomic<uint32_t>& word);
void WakeAll(std::atomic<uint32_t>& word);

}  // namespace Tarvo::TimePage

#endif  // TARVO_UTILS_TIME_PAGE_LAYOUT_H
