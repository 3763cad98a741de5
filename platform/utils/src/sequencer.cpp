#include "sequencer.h"

#include <unistd.h>

#include <atomic>

#include "time_page_layout.h"

namespace Tarvo {
namespace {
using TimePage::Layout;
using TimePage::Lock;
using TimePage::Slot;

constexpr Sequencer::Turn kFirstBackTurn = Sequencer::Turn{1} << 63;

std::atomic<bool> gEnabled{false};
thread_local bool tHolding = false;

Slot& At(Layout& page, uint64_t index)
{
    return page.slots[index & (TimePage::kLineCapacity - 1)];
}

// Drops cancelled turns from the front; the first live turn, or kNoTurn.
Sequencer::Turn FrontLocked(Layout& page)
{
    while (page.first != page.end && At(page, page.first).pid == 0) {
        ++page.first;
    }
    return page.first == page.end ? Sequencer::kNoTurn : At(page, page.first).turn;
}

// The line is sorted by turn; the live slot of `turn`, or nullptr once taken or cancelled.
Slot* FindLocked(Layout& page, Sequencer::Turn turn)
{
    const uint64_t count = page.end - page.first;
    uint64_t low = 0;
    uint64_t high = count;
    while (low < high) {
        const uint64_t middle = low + (high - low) / 2;
        if (At(page, page.first + middle).turn < turn) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    Slot* slot = low < count ? &At(page, page.first + low) : nullptr;
    return slot != nullptr && slot->turn == turn && slot->pid != 0 ? slot : nullptr;
}

// Runs `change` under the page lock; wakes the waiters for the line if it returns true.
template <typename Change>
auto ChangeLine(Change change)
{
    Layout& page = TimePage::Current();
    bool wake = false;
    auto result = [&] {
        Lock lock(page);
        auto outcome = change(page, wake);
        if (wake) {
            TimePage::Bump(page.lineChanged);
        }
        return outcome;
    }();
    if (wake) {
        TimePage::WakeAll(page.lineChanged);
    }
    return result;
}

Sequencer::Turn Queue(bool first)
{
    if (!gEnabled.load(std::memory_order_acquire)) {
        return Sequencer::kNoTurn;
    }
    const int32_t pid = TimePage::OwnPid();
    return ChangeLine([first, pid](Layout& page, bool& wake) {
        FrontLocked(page);
        if (page.end - page.first >= TimePage::kLineCapacity) {
            TimePage::Fail("the line of turns is full (65536 turns at once)");
        }
        // The slot is written first and the index moved last, so a death in between loses nothing.
        Sequencer::Turn turn;
        if (first) {
            turn = page.nextFront--;
            At(page, page.first - 1) = Slot{turn, pid, 0};
            --page.first;
        } else {
            turn = page.nextBack++;
            At(page, page.end) = Slot{turn, pid, 0};
            ++page.end;
        }
        // Nobody waits for a turn that is not first; a new first one may be waited for already.
        wake = first || page.end - page.first == 1;
        return turn;
    });
}
}  // namespace

void Sequencer::Enable()
{
    gEnabled.store(true, std::memory_order_release);
}

bool Sequencer::Enabled()
{
    return gEnabled.load(std::memory_order_acquire);
}

Sequencer::Turn Sequencer::Reserve()
{
    return Queue(false);
}

Sequencer::Turn Sequencer::ReserveFirst()
{
    return Queue(true);
}

bool Sequencer::Take(Turn turn)
{
    if (turn == kNoTurn) {
        return true;
    }
    Layout& page = TimePage::Current();
    const int32_t pid = TimePage::OwnPid();
    for (;;) {
        uint32_t seen = 0;
        {
            Lock lock(page);
            if (page.holder == 0 && FrontLocked(page) == turn) {
                ++page.first;
                page.holder = pid;
                ++page.taken;
                tHolding = true;
                return true;
            }
            if (FindLocked(page, turn) == nullptr) {
                return false;
            }
            seen = page.lineChanged.load(std::memory_order_acquire);
        }
        TimePage::WaitChange(page.lineChanged, seen, -1);
    }
}

void Sequencer::Cancel(Turn turn)
{
    if (turn == kNoTurn) {
        return;
    }
    ChangeLine([turn](Layout& page, bool& wake) {
        if (Slot* slot = FindLocked(page, turn)) {
            slot->pid = 0;
            wake = true;
        }
        return 0;
    });
}

void Sequencer::Finish()
{
    if (!tHolding) {
        return;
    }
    tHolding = false;
    const int32_t pid = TimePage::OwnPid();
    ChangeLine([pid](Layout& page, bool& wake) {
        // Not if this process was given up for dead and the baton went on meanwhile.
        wake = page.holder == pid;
        if (wake) {
            page.holder = 0;
        }
        return 0;
    });
}

bool Sequencer::Holding()
{
    return tHolding;
}

bool Sequencer::IsHandOff(Turn turn)
{
    return turn != kNoTurn && turn < kFirstBackTurn;
}

bool Sequencer::Adopt(Turn turn)
{
    if (turn == kNoTurn) {
        return true;
    }
    const int32_t pid = TimePage::OwnPid();
    return ChangeLine([turn, pid](Layout& page, bool&) {
        Slot* slot = FindLocked(page, turn);
        if (slot != nullptr) {
            slot->pid = pid;
        }
        return slot != nullptr;
    });
}

void Sequencer::Forget(int32_t pid)
{
    if (pid <= 0) {
        return;
    }
    ChangeLine([pid](Layout& page, bool& wake) {
        for (uint64_t index = page.first; index != page.end; ++index) {
            if (At(page, index).pid == pid) {
                At(page, index).pid = 0;
            }
        }
        if (page.holder == pid) {
            page.holder = 0;
        }
        wake = true;
        return 0;
    });
}

uint64_t Sequencer::Progress()
{
    Layout& page = TimePage::Current();
    Lock lock(page);
    return page.taken;
}

Sequencer::Hold::Hold() : taken_(Enabled() && !tHolding)
{
    if (taken_) {
        Take(Reserve());
    }
}

Sequencer::Hold::~Hold()
{
    if (taken_) {
        Finish();
    }
}

Sequencer::Yield::Yield() : held_(tHolding)
{
    Finish();
}

Sequencer::Yield::~Yield()
{
    if (held_) {
        Take(ReserveFirst());
    }
}

}  // namespace Tarvo
