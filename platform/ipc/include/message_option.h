#ifndef TARVO_IPC_MESSAGE_OPTION_H
#define TARVO_IPC_MESSAGE_OPTION_H

// How a request is sent: synchronously (the caller waits for the reply, at most GetWaitTime()
// seconds) or one-way (TF_ASYNC: SendRequest returns once the request is queued, no reply).

namespace Tarvo {

class MessageOption {
public:
    enum {
        TF_SYNC = 0x00,
        TF_ASYNC = 0x01,
    };
    static constexpr int TF_WAIT_TIME = 8;

    MessageOption(int flags = TF_SYNC, int waitTime = TF_WAIT_TIME) : flags_(flags), waitTime_(waitTime) {}

    int GetFlags() const { return flags_; }
    void SetFlags(int flags) { flags_ = flags; }
    int GetWaitTime() const { return waitTime_; }
    void SetWaitTime(int waitTime) { waitTime_ = waitTime; }

private:
    int flags_;
    int waitTime_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_MESSAGE_OPTION_H
