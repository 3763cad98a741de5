#include "iremote_broker.h"

namespace Tarvo {

BrokerRegistration& BrokerRegistration::Get()
{
    // Never destroyed: delegators of libraries unloaded at exit unregister late.
    static BrokerRegistration* registration = new BrokerRegistration();
    return *registration;
}

bool BrokerRegistration::Register(const std::u16string& descriptor, const Constructor& creator, const void* owner)
{
    if (!creator) {
        return false;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return creators_.emplace(descriptor, Entry{creator, owner}).second;
}

void BrokerRegistration::Unregister(const std::u16string& descriptor, const void* owner)
{
    Constructor removed;
    std::lock_guard<std::mutex> lock(mutex_);
    auto entry = creators_.find(descriptor);
    if (entry != creators_.end() && entry->second.owner == owner) {
        removed = std::move(entry->second.creator);
        creators_.erase(entry);
    }
}

sptr<IRemoteBroker> BrokerRegistration::NewInstance(const std::u16string& descriptor, const sptr<IRemoteObject>& object)
{
    if (object == nullptr) {
        return nullptr;
    }
    if (!object->IsProxyObject()) {
        return object->AsInterface();
    }
    Constructor creator;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto entry = creators_.find(descriptor);
        if (entry == creators_.end()) {
            return nullptr;
        }
        creator = entry->second.creator;
    }
    return creator(object);
}

}  // namespace Tarvo
