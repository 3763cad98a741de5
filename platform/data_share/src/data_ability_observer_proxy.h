#ifndef TARVO_DATA_SHARE_DATA_ABILITY_OBSERVER_PROXY_H
#define TARVO_DATA_SHARE_DATA_ABILITY_OBSERVER_PROXY_H

#include "i_data_ability_observer.h"
#include "iremote_proxy.h"

namespace Tarvo::AAFwk {

// Sends ON_CHANGE one-way; a failure is not reported (nobody waits for an observer).
class DataAbilityObserverProxy : public IRemoteProxy<IDataAbilityObserver> {
public:
    explicit DataAbilityObserverProxy(const sptr<IRemoteObject>& impl);

    void OnChange() override;
};

}  // namespace Tarvo::AAFwk

#endif  // TARVO_DATA_SHARE_DATA_ABILITY_OBSERVER_PROXY_H
