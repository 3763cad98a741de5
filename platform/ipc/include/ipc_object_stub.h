#ifndef TARVO_IPC_IPC_OBJECT_STUB_H
#define TARVO_IPC_IPC_OBJECT_STUB_H

// The object itself, in the process that created it (its owner).
//
// Contract:
//  - SendRequest() from a thread of the owner is a direct call of OnRemoteRequest() on that thread;
//    from any other process it is carried by the transport like a proxy's request. The stub must then
//    be held by an sptr (ERR_INVALID_VALUE otherwise).
//  - Requests carried by the transport run on threads of the owner, concurrently unless the stub was
//    made with serialInvokeFlag, in which case they run one at a time.
//  - The stub does not keep its owner alive; once the owner is gone or dead the object is dead.

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "iremote_object.h"
#include "message_option.h"
#include "message_parcel.h"
#include "process_session.h"

namespace Tarvo {

class IPCObjectStub : public IRemoteObject {
public:
    explicit IPCObjectStub(std::u16string descriptor = std::u16string(), bool serialInvokeFlag = false);
    ~IPCObjectStub() override = default;

    int SendRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;
    // PING_TRANSACTION: 0. INTERFACE_TRANSACTION: the descriptor as a string16 in the reply, 0.
    // DUMP_TRANSACTION: Dump() with the request's arguments; the reply holds its result (int32) and
    // what it wrote (string), 0. Any other code: IPC_STUB_UNKNOW_TRANS_ERR.
    virtual int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option);
    // Writes the object's state, as text, to fd. Nothing to tell by default.
    virtual int Dump(int fd, const std::vector<std::u16string>& args);

    bool IsProxyObject() const override { return false; }
    bool IsObjectDead() const override;
    bool AddDeathRecipient(const sptr<DeathRecipient>& recipient) override;
    bool RemoveDeathRecipient(const sptr<DeathRecipient>& recipient) override;

    // The session (IPCTransport) that created the stub; null once it no longer exists.
    std::shared_ptr<ProcessSession> GetOwner() const { return owner_.lock(); }
    // Compares without taking a reference on either process.
    bool IsOwnedBy(const std::weak_ptr<ProcessSession>& process) const
    {
        return !owner_.owner_before(process) && !process.owner_before(owner_);
    }
    bool IsSerialInvoke() const { return serialInvokeFlag_; }

    // The transport's entry: OnRemoteRequest(), one request at a time for a serial stub.
    int DispatchRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option);

private:
    int DumpToReply(MessageParcel& data, MessageParcel& reply);

    // Weak: a stub held by another process's proxy must not keep its process's threads alive.
    const std::weak_ptr<ProcessSession> owner_;
    const bool serialInvokeFlag_;
    std::mutex serialMutex_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IPC_OBJECT_STUB_H
