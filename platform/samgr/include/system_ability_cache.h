#ifndef TARVO_SAMGR_SYSTEM_ABILITY_CACHE_H
#define TARVO_SAMGR_SYSTEM_ABILITY_CACHE_H

// A client's hold on one system ability: found through the service manager once per process of
// this real process, then kept until the ability's process dies or the service manager reports it
// removed, replaced or unobtainable; the next call then asks again. Without a subscription (the
// service manager refused it) nothing is kept and every call asks.
//
// Thread-safe; nothing is asked of another process while its lock is held.

#include <cstdint>
#include <memory>

#include "iremote_broker.h"
#include "iremote_object.h"
#include "process_session.h"

namespace Tarvo {

class SystemAbilityCache {
public:
    // Turns the ability's object into the interface a client calls; null if it is none.
    using Caster = sptr<IRemoteBroker> (*)(const sptr<IRemoteObject>&);

    explicit SystemAbilityCache(int32_t systemAbilityId, Caster caster = nullptr);
    ~SystemAbilityCache();
    SystemAbilityCache(const SystemAbilityCache&) = delete;
    SystemAbilityCache& operator=(const SystemAbilityCache&) = delete;

    // The ability as the calling thread's process sees it; null while it cannot be obtained.
    sptr<IRemoteObject> GetObject();
    // The caster's interface of it (null without a caster).
    sptr<IRemoteBroker> GetBroker();

    struct State;

private:
    struct Found {
        sptr<IRemoteObject> object;
        sptr<IRemoteBroker> broker;
    };
    Found Get();
    Found Resolve(const std::shared_ptr<ProcessSession>& session);

    const std::shared_ptr<State> state_;
};

// The typed form: Get() gives the interface's proxy, made once per resolution.
template <typename INTERFACE>
class SystemAbilityClient {
public:
    explicit SystemAbilityClient(int32_t systemAbilityId)
        : cache_(systemAbilityId,
                 [](const sptr<IRemoteObject>& object) -> sptr<IRemoteBroker> { return iface_cast<INTERFACE>(object); })
    {
    }

    sptr<INTERFACE> Get()
    {
        sptr<IRemoteBroker> broker = cache_.GetBroker();
        return sptr<INTERFACE>(static_cast<INTERFACE*>(broker.GetRefPtr()));
    }

private:
    SystemAbilityCache cache_;
};

}  // namespace Tarvo

#endif  // TARVO_SAMGR_SYSTEM_ABILITY_CACHE_H
