#include "event_runner.h"

#include <pthread.h>

#include "event_queue.h"
#include "virtual_clock.h"
#include "virtual_process.h"

namespace Tarvo::AppExecFwk {
namespace {
// Linux limits a thread name to 15 characters plus the terminator.
constexpr size_t kMaxThreadNameLength = 15;
}  // namespace

EventRunner::EventRunner(const std::string& threadName)
    : threadName_(threadName), queue_(std::make_shared<EventQueue>())
{
}

std::shared_ptr<EventRunner> EventRunner::Create(const std::string& threadName, ThreadMode)
{
    std::shared_ptr<EventRunner> runner(new EventRunner(threadName));
    VirtualClock::AddClient(runner->queue_);
    // The thread holds the queue, not the runner, so dropping the last runner reference stops it.
    std::thread thread = VirtualProcess::Current()->StartThread(
        [queue = runner->queue_, name = threadName.substr(0, kMaxThreadNameLength)] {
            pthread_setname_np(pthread_self(), name.c_str());
            queue->Run();
        });
    std::lock_guard<std::mutex> lock(runner->mutex_);
    runner->thread_ = std::move(thread);
    return runner;
}

EventRunner::~EventRunner()
{
    Stop();
}

bool EventRunner::IsRunning() const
{
    return !queue_->IsStopped();
}

void EventRunner::Stop()
{
    queue_->Stop();
    std::thread thread;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        thread = std::move(thread_);
    }
    if (!thread.joinable()) {
        return;
    }
    // A task of this runner may stop it, or drop its last reference; a thread cannot join itself.
    if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();
    } else {
        thread.join();
    }
}

}  // namespace Tarvo::AppExecFwk
