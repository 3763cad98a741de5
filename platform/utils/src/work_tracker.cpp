#include "work_tracker.h"

#include <unistd.h>

#include <atomic>
#include <utility>

#include "time_page_layout.h"

namespace Tarvo {
namespace {
using TimePage::Layout;
using TimePage::Lock;
using TimePage::Share;

// Where this process's share was last found; checked before use, so a stale one costs a scan.
std::atomic<uint32_t> gShareHint{0};

int64_t TotalLocked(const Layout& page)
{
    int64_t total = 0;
    for (uint32_t i = 0; i < page.sharesUsed; ++i) {
        total += page.shares[i].pid != 0 ? page.shares[i].count : 0;
    }
    return total;
}

Share& OwnShareLocked(Layout& page, int32_t pid)
{
    const uint32_t hint = gShareHint.load(std::memory_order_relaxed);
    if (hint < page.sharesUsed && page.shares[hint].pid == pid) {
        return page.shares[hint];
    }
    uint32_t found = page.sharesUsed;
    for (uint32_t i = 0; i < page.sharesUsed && found == page.sharesUsed; ++i) {
        if (page.shares[i].pid == pid) {
            found = i;
        }
    }
    for (uint32_t i = 0; i < page.sharesUsed && found == page.sharesUsed; ++i) {
        if (page.shares[i].pid == 0) {
            // The pid is written last: it is what makes the share this process's.
            page.shares[i].count = 0;
            page.shares[i].pid = pid;
            found = i;
        }
    }
    if (found == page.sharesUsed) {
        if (found == TimePage::kMaxShares) {
            TimePage::Fail("more than 256 processes count work in flight");
        }
        page.shares[found] = Share{pid, 0, 0};
        ++page.sharesUsed;
    }
    if (pid == TimePage::OwnPid()) {
        gShareHint.store(found, std::memory_order_relaxed);
    }
    return page.shares[found];
}

// Runs `change` under the page lock, then wakes the quiet-waiters if no work is left in flight.
template <typename Change>
void ChangeCount(Change change)
{
    Layout& page = TimePage::Current();
    bool quiet = false;
    {
        Lock lock(page);
        change(page);
        ++page.changes;
        quiet = TotalLocked(page) == 0 && page.quietWaiters > 0;
        if (quiet) {
            TimePage::Bump(page.quietChanged);
        }
    }
    if (quiet) {
        TimePage::WakeAll(page.quietChanged);
    }
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
    return Motion{page.changes, page.taken};
}

// Counted as a waiter from the moment it looks until it is done waiting, so that a change to quiet
// in between wakes it.
bool WaitQuietUntil(Layout& page, std::chrono::steady_clock::time_point deadline)
{
    for (;;) {
        uint32_t seen = 0;
        {
            Lock lock(page);
            if (TotalLocked(page) == 0) {
                return true;
            }
            seen = page.quietChanged.load(std::memory_order_acquire);
            ++page.quietWaiters;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() > 0) {
            TimePage::WaitChange(page.quietChanged, seen, left.count());
        }
        {
            Lock lock(page);
            if (page.quietWaiters > 0) {
                --page.quietWaiters;
            }
        }
        if (left.count() <= 0) {
            return false;
        }
    }
}

void Add(int64_t delta, int32_t pid = TimePage::OwnPid())
{
    ChangeCount([pid, delta](Layout& page) { OwnShareLocked(page, pid).count += delta; });
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
    Lock lock(page);
    return TotalLocked(page);
}

void WorkTracker::Forget(int32_t pid)
{
    if (pid <= 0) {
        return;
    }
    ChangeCount([pid](Layout& page) {
        for (uint32_t i = 0; i < page.sharesUsed; ++i) {
            if (page.shares[i].pid == pid) {
                page.shares[i].count = 0;
                page.shares[i].pid = 0;
            }
        }
    });
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
