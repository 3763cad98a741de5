#include "sequencer.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <unordered_set>

namespace Tarvo {
namespace {
struct Line {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Sequencer::Turn> turns;
    // Cancelled while its taker may already wait for it.
    std::unordered_set<Sequencer::Turn> cancelled;
    Sequencer::Turn nextTurn = 1;
    bool busy = false;
    uint64_t taken = 0;
};

std::atomic<bool> gEnabled{false};
thread_local bool tHolding = false;

Line& GetLine()
{
    // Never destroyed: threads may finish their turns during static destruction.
    static auto* line = new Line();
    return *line;
}

Sequencer::Turn Queue(bool first)
{
    if (!gEnabled.load(std::memory_order_acquire)) {
        return Sequencer::kNoTurn;
    }
    Line& line = GetLine();
    std::lock_guard<std::mutex> lock(line.mutex);
    const Sequencer::Turn turn = line.nextTurn++;
    if (first) {
        line.turns.push_front(turn);
    } else {
        line.turns.push_back(turn);
    }
    // Nobody waits for a turn that is not first; a new first one may be waited for already.
    if (first || line.turns.size() == 1) {
        line.changed.notify_all();
    }
    return turn;
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
    Line& line = GetLine();
    std::unique_lock<std::mutex> lock(line.mutex);
    while (line.busy || line.turns.empty() || line.turns.front() != turn) {
        if (line.cancelled.erase(turn) != 0) {
            return false;
        }
        line.changed.wait(lock);
    }
    line.turns.pop_front();
    line.busy = true;
    ++line.taken;
    tHolding = true;
    return true;
}

void Sequencer::Cancel(Turn turn)
{
    if (turn == kNoTurn) {
        return;
    }
    Line& line = GetLine();
    {
        std::lock_guard<std::mutex> lock(line.mutex);
        auto it = std::find(line.turns.begin(), line.turns.end(), turn);
        if (it == line.turns.end()) {
            return;
        }
        line.turns.erase(it);
        line.cancelled.insert(turn);
    }
    line.changed.notify_all();
}

void Sequencer::Finish()
{
    if (!tHolding) {
        return;
    }
    tHolding = false;
    Line& line = GetLine();
    {
        std::lock_guard<std::mutex> lock(line.mutex);
        line.busy = false;
    }
    line.changed.notify_all();
}

bool Sequencer::Holding()
{
    return tHolding;
}

uint64_t Sequencer::Progress()
{
    Line& line = GetLine();
    std::lock_guard<std::mutex> lock(line.mutex);
    return line.taken;
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
