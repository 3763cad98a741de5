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
      option(option)
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
    }
    done_.notify_all();
    return true;
}

int Transaction::Wait(std::chrono::seconds timeout, bool& replied)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (!done_.wait_for(lock, timeout, [this] { return completed_; })) {
        replied = false;
        return ERR_TIMED_OUT;
    }
    replied = replied_;
    return status_;
}

}  // namespace Tarvo
