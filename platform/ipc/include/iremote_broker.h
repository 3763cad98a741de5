#ifndef TARVO_IPC_IREMOTE_BROKER_H
#define TARVO_IPC_IREMOTE_BROKER_H

// Interfaces over remote objects, and the registry that turns a remote object into one.
//
// An interface derives from IRemoteBroker and names itself with DECLARE_INTERFACE_DESCRIPTOR. Its
// stub derives from IRemoteStub<I>, its proxy from IRemoteProxy<I>; a file-level static
// BrokerDelegator<Proxy> registers the proxy's creator while the library defining it is loaded.
// iface_cast<I>(object) then gives the stub itself for a local object and a new proxy for a proxy
// object, null when neither is an I.

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "iremote_object.h"
#include "refbase.h"

namespace Tarvo {

class IRemoteBroker : public virtual RefBase {
public:
    ~IRemoteBroker() override = default;
    virtual sptr<IRemoteObject> AsObject() = 0;
};

// DESCRIPTOR is a u"..." literal.
#define DECLARE_INTERFACE_DESCRIPTOR(DESCRIPTOR)                     \
    static const std::u16string& GetDescriptor()                     \
    {                                                                \
        static const std::u16string interfaceDescriptor(DESCRIPTOR); \
        return interfaceDescriptor;                                  \
    }

// Thread-safe. Creators run without the registry's lock held.
class BrokerRegistration {
public:
    using Constructor = std::function<sptr<IRemoteBroker>(const sptr<IRemoteObject>&)>;

    static BrokerRegistration& Get();

    // False if the descriptor already has a creator.
    bool Register(const std::u16string& descriptor, const Constructor& creator, const void* owner);
    // Only the owner that registered a descriptor removes it.
    void Unregister(const std::u16string& descriptor, const void* owner);
    // Null object: null. Proxy: the registered creator's result (null if none). Local object:
    // object->AsInterface().
    sptr<IRemoteBroker> NewInstance(const std::u16string& descriptor, const sptr<IRemoteObject>& object);

private:
    BrokerRegistration() = default;
    struct Entry {
        Constructor creator;
        const void* owner;
    };
    std::mutex mutex_;
    std::map<std::u16string, Entry> creators_;
};

template <typename T>
class BrokerDelegator {
public:
    BrokerDelegator() : descriptor_(T::GetDescriptor())
    {
        BrokerRegistration::Get().Register(
            descriptor_, [](const sptr<IRemoteObject>& object) -> sptr<IRemoteBroker> { return new T(object); }, this);
    }
    ~BrokerDelegator() { BrokerRegistration::Get().Unregister(descriptor_, this); }
    BrokerDelegator(const BrokerDelegator&) = delete;
    BrokerDelegator& operator=(const BrokerDelegator&) = delete;

private:
    // A copy: the descriptor's own static may be gone when a library's statics are torn down.
    const std::u16string descriptor_;
};

template <typename INTERFACE>
sptr<INTERFACE> iface_cast(const sptr<IRemoteObject>& object)
{
    sptr<IRemoteBroker> broker = BrokerRegistration::Get().NewInstance(INTERFACE::GetDescriptor(), object);
    return sptr<INTERFACE>(dynamic_cast<INTERFACE*>(broker.GetRefPtr()));
}

}  // namespace Tarvo

#endif  // TARVO_IPC_IREMOTE_BROKER_H
