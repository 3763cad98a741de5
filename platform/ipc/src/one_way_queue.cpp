#include "one_way_queue.h"

namespace Tarvo {

bool OneWayQueue::Push(std::shared_ptr<Transaction> txn)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto [queue, idle] = queues_.try_emplace(txn->target.GetRefPtr());
    queue->second.push_back(std::move(txn));
    return idle;
}

std::shared_ptr<Transaction> OneWayQueue::Next(const IPCObjectStub* target)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto queue = queues_.find(target);
    if (queue == queues_.end()) {
        return nullptr;
    }
    if (queue->second.empty()) {
        queues_.erase(queue);
        return nullptr;
    }
    std::shared_ptr<Transaction> txn = std::move(queue->second.front());
    queue->second.pop_front();
    return txn;
}

std::deque<std::shared_ptr<Transaction>> OneWayQueue::Abandon(const IPCObjectStub* target)
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::deque<std::shared_ptr<Transaction>> left;
    auto queue = queues_.find(target);
    if (queue != queues_.end()) {
        left.swap(queue->second);
        queues_.erase(queue);
    }
    return left;
}

}  // namespace Tarvo
