#include "transaction.h"

#include "ipc_types.h"

namespace Tarvo {

Transaction::Transaction(sptr<IPCObjectStub> target, int32_t targetPid, uint32_t code, const MessageParcel& data,
                         const MessageOption& option)
    : target(std::move(target)),
      targetPid(targetPid),
      code(code),
      oneWay((option.GetFlags() & MessageOption::TF_ASYNC) != 0),
      data(data),
      option(option),
      senderSequenced_(!oneWay && Sequencer::Holding())
{
    // The handler reads its copy from the start, whatever the sender had read.
    this->data.RewindRead(0);
}

bool Transaction::Complete(int status, bool replied)
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (completed_) {
            return false;
        }
        completed_ = true;
        replied_ = replied;
        status_ = status;
        if (senderSequenced_) {
            resume_ = Sequencer::ReserveFirst();
        }
    }
    done_.notify_all();
    return true;
}

int Transaction::Wait(std::chrono::seconds timeout, bool& replied)
{
    // One-way requests queued behind this one in the sender's lane must not wait for the reply,
    // nor those this thread sent and has not woken their receivers for yet.
    VirtualProcess::WakeHeldLanes();
    VirtualProcess::LetLaneGoOn();
    Sequencer::Finish();
    std::unique_lock<std::mutex> lock(mutex_);
    if (!done_.wait_for(lock, timeout, [this] { return completed_; })) {
        // Marked complete so that a late reply neither counts nor reserves a turn.
        completed_ = true;
        replied_ = false;
        status_ = ERR_TIMED_OUT;
        if (senderSequenced_) {
            resume_ = Sequencer::ReserveFirst();
        }
    }
    replied = replied_;
    const int status = status_;
    const Sequencer::Turn resume = resume_;
    lock.unlock();
    Sequencer::Take(resume);
    return status;
}

}  // namespace Tarvo
