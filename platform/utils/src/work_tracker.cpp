#include "work_tracker.h"

#include <unistd.h>

#include <atomic>
#include <optional>
#include <utility>

#include "time_page_layout.h"

namespace Tarvo {
namespace {
using TimePage::Layout;
using TimePage::Lock;
using TimePage::Share;

// Where this process's share was last found; checked before use, so a stale one costs a scan.
std::atomic<uint32_t> gShareHint{0};

// The live share of `pid`, found without the lock; null if it has none yet.
Share* FindShare(Layout& page, int32_t pid)
{
    const uint32_t used = page.sharesUsed.load();
    const uint32_t hint = gShareHint.load(std::memory_order_relaxed);
    if (hint < used && page.shares[hint].pid.load() == pid) {
        return &page.shares[hint];
    }
    for (uint32_t i = 0; i < used; ++i) {
        if (page.shares[i].pid.load() == pid) {
            return &page.shares[i];
        }
    }
    return nullptr;
}

Share& OwnShareLocked(Layout& page, int32_t pid)
{
    Share* share = FindShare(page, pid);
    const uint32_t used = page.sharesUsed.load();
    for (uint32_t i = 0; i < used && share == nullptr; ++i) {
        if (page.shares[i].pid.load() == 0) {
            share = &page.shares[i];
        }
    }
    if (share == nullptr) {
        if (used == TimePage::kMaxShares) {
            TimePage::Fail("more than 256 processes count work in flight");
        }
        share = &page.shares[used];
    }
    if (share->pid.load() != pid) {
        // The pid is written last: it is what makes the share this process's.
        share->count.store(0);
        share->pid.store(pid);
        if (share == &page.shares[used]) {
            page.sharesUsed.store(used + 1);
        }
    }
    if (pid == TimePage::OwnPid()) {
        gShareHint.store(static_cast<uint32_t>(share - page.shares), std::memory_order_relaxed);
    }
    return *share;
}

// The work in flight if no count changed while the shares were read; nothing otherwise. Every
// change bumps `changes` before it counts, so a sum read between two equal bumps is one the device
// really had.
std::optional<int64_t> ConsistentTotal(Layout& page)
{
    const uint64_t before = page.changes.load();
    int64_t total = 0;
    const uint32_t used = page.sharesUsed.load();
    for (uint32_t i = 0; i < used; ++i) {
        total += page.shares[i].pid.load() != 0 ? page.shares[i].count.load() : 0;
    }
    if (page.changes.load() != before) {
        return std::nullopt;
    }
    return total;
}

// Wakes the quiet-waiters if the device is quiet. A change that races the check makes it give up:
// the racing change checks again after it has counted.
void WakeIfQuiet(Layout& page)
{
    if (page.quietWaiters.load() == 0 || ConsistentTotal(page) != 0) {
        return;
    }
    TimePage::Bump(page.quietChanged);
    TimePage::WakeAll(page.quietChanged);
}

void Count(Layout& page, Share& share, int64_t delta)
{
    page.changes.fetch_add(1);
    share.count.fetch_add(delta);
    WakeIfQuiet(page);
}

// This process counts in its own share without the lock; another's share (work sent to it) is
// counted under the lock, so that it cannot be freed meanwhile by Forget().
void Add(int64_t delta, int32_t pid = TimePage::OwnPid())
{
    Layout& page = TimePage::Current();
    if (pid == TimePage::OwnPid()) {
        if (Share* share = FindShare(page, pid)) {
            Count(page, *share, delta);
            return;
        }
    }
    Share* share = nullptr;
    {
        Lock lock(page);
        share = &OwnShareLocked(page, pid);
        page.changes.fetch_add(1);
        share->count.fetch_add(delta);
    }
    WakeIfQuiet(page);
}

// What tells a busy device from a stuck one.
struct Motion {
    uint64_t changes;
    uint64_t turns;
    bool operator==(const Motion&) const = default;
};

Motion Snapshot(Layout& page)
{
    Lock lock(page);
    return Motion{page.changes.load(), page.taken};
}

// Counted as a waiter from the moment it looks until it is done waiting, so that a change to quiet
// in between wakes it.
bool WaitQuietUntil(Layout& page, std::chrono::steady_clock::time_point deadline)
{
    for (;;) {
        page.quietWaiters.fetch_add(1);
        const uint32_t seen = page.quietChanged.load(std::memory_order_acquire);
        if (ConsistentTotal(page) == 0) {
            page.quietWaiters.fetch_sub(1);
            return true;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() > 0) {
            TimePage::WaitChange(page.quietChanged, seen, left.count());
        }
        page.quietWaiters.fetch_sub(1);
        if (left.count() <= 0) {
            return false;
        }
    }
}
}  // namespace

WorkTracker& WorkTracker::GetInstance()
{
    // Never destroyed: worker threads may still end work during static destruction.
    static auto* instance = new WorkTracker();
    return *instance;
}

void WorkTracker::Begin()
{
    Add(1);
}

void WorkTracker::End()
{
    Add(-1);
}

void WorkTracker::BeginFor(int32_t pid)
{
    Add(1, pid);
}

void WorkTracker::EndFor(int32_t pid)
{
    Add(-1, pid);
}

int64_t WorkTracker::InFlight() const
{
    Layout& page = TimePage::Current();
    for (;;) {
        if (std::optional<int64_t> total = ConsistentTotal(page)) {
            return *total;
        }
    }
}

void WorkTracker::Forget(int32_t pid)
{
    if (pid <= 0) {
        return;
    }
    Layout& page = TimePage::Current();
    {
        Lock lock(page);
        page.changes.fetch_add(1);
        const uint32_t used = page.sharesUsed.load();
        for (uint32_t i = 0; i < used; ++i) {
            if (page.shares[i].pid.load() == pid) {
                page.shares[i].count.store(0);
                page.shares[i].pid.store(0);
            }
        }
    }
    WakeIfQuiet(page);
}

bool WorkTracker::WaitQuiet(std::chrono::milliseconds stallLimit)
{
    Layout& page = TimePage::Current();
    for (;;) {
        const Motion before = Snapshot(page);
        if (WaitQuietUntil(page, std::chrono::steady_clock::now() + stallLimit)) {
            return true;
        }
        if (Snapshot(page) == before) {
            return false;
        }
    }
}

WorkTracker::Token::Token() : active_(true)
{
    WorkTracker::GetInstance().Begin();
}

WorkTracker::Token WorkTracker::Token::Adopt()
{
    return Token(Adopted{});
}

WorkTracker::Token::Token(Token&& other) noexcept : active_(std::exchange(other.active_, false)) {}

WorkTracker::Token& WorkTracker::Token::operator=(Token&& other) noexcept
{
    if (this != &other) {
        if (active_) {
            WorkTracker::GetInstance().End();
        }
        active_ = std::exchange(other.active_, false);
    }
    return *this;
}

WorkTracker::Token::~Token()
{
    if (active_) {
        WorkTracker::GetInstance().End();
    }
}

}  // namespace Tarvo
