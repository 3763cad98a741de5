#ifndef TARVO_IPC_IREMOTE_OBJECT_H
#define TARVO_IPC_IREMOTE_OBJECT_H

// An object that answers requests: a stub (IPCObjectStub) in the process that owns it, or a proxy
// (IPCObjectProxy) standing for a stub of another process.
//
// Contract:
//  - SendRequest() returns what the object's OnRemoteRequest returned for a synchronous request
//    (the reply filled in), 0 once a one-way request is queued, or a transport code of
//    ipc_types.h (ERR_DEAD_OBJECT, ERR_TIMED_OUT, ERR_TRANSACTION_FAILED).
//  - A death recipient is told once, on a thread of the process that registered it, when the
//    process owning the object dies; then it is dropped. Only proxies accept recipients.
//  - The descriptor names the object's interface and never changes.

#include <cstdint>
#include <string>

#include "parcel.h"
#include "refbase.h"

namespace Tarvo {

class IRemoteBroker;
class MessageParcel;
class MessageOption;

class IRemoteObject : public virtual Parcelable {
public:
    class DeathRecipient : public virtual RefBase {
    public:
        // Called on a thread of the process holding the proxy; `object` is that proxy.
        virtual void OnRemoteDied(const wptr<IRemoteObject>& object) = 0;
    };

    explicit IRemoteObject(std::u16string descriptor = std::u16string());
    ~IRemoteObject() override = default;

    virtual int SendRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) = 0;
    virtual bool IsProxyObject() const;
    virtual bool IsObjectDead() const;
    // False if the recipient is null, the object is no proxy, or it is already dead.
    virtual bool AddDeathRecipient(const sptr<DeathRecipient>& recipient) = 0;
    // Whether the recipient was registered (and is not any more).
    virtual bool RemoveDeathRecipient(const sptr<DeathRecipient>& recipient) = 0;
    // The local interface object of a stub; null for a proxy (see BrokerRegistration).
    virtual sptr<IRemoteBroker> AsInterface();

    std::u16string GetObjectDescriptor() const { return descriptor_; }
    virtual int32_t GetObjectRefCount();

    // Writes the object as a reference; only a MessageParcel can carry one.
    bool Marshalling(Parcel& parcel) const override;

protected:
    const std::u16string descriptor_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IREMOTE_OBJECT_H
