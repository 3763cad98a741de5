#ifndef TARVO_DATA_SHARE_DATA_ABILITY_OBSERVER_STUB_H
#define TARVO_DATA_SHARE_DATA_ABILITY_OBSERVER_STUB_H

// Base of an observer: ON_CHANGE requests call OnChange() on a thread of the observer's process.

#include "i_data_ability_observer.h"
#include "iremote_stub.h"

namespace Tarvo::AAFwk {

class DataAbilityObserverStub : public IRemoteStub<IDataAbilityObserver> {
public:
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;
};

}  // namespace Tarvo::AAFwk

#endif  // TARVO_DATA_SHARE_DATA_ABILITY_OBSERVER_STUB_H
