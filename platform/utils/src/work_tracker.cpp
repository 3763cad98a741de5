#include "work_tracker.h"

#include <utility>

#include "sequencer.h"

namespace Tarvo {

WorkTracker& WorkTracker::GetInstance()
{
    // Never destroyed: worker threads may still end work during static destruction.
    static auto* instance = new WorkTracker();
    return *instance;
}

void WorkTracker::Begin()
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++inFlight_;
    ++changes_;
}

void WorkTracker::End()
{
    std::lock_guard<std::mutex> lock(mutex_);
    ++changes_;
    if (--inFlight_ == 0) {
        quiet_.notify_all();
    }
}

int64_t WorkTracker::InFlight() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return inFlight_;
}

bool WorkTracker::WaitQuiet(std::chrono::milliseconds stallLimit)
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        const uint64_t changes = changes_;
        const uint64_t turns = Sequencer::Progress();
        if (quiet_.wait_for(lock, stallLimit, [this] { return inFlight_ == 0; })) {
            return true;
        }
        if (changes == changes_ && turns == Sequencer::Progress()) {
            return false;
        }
    }
}

WorkTracker::Token::Token() : active_(true)
{
    WorkTracker::GetInstance().Begin();
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
