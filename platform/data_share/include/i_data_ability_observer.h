#ifndef TARVO_DATA_SHARE_I_DATA_ABILITY_OBSERVER_H
#define TARVO_DATA_SHARE_I_DATA_ABILITY_OBSERVER_H

// Told that the data behind a URI changed. Implemented in the observing process by a
// DataAbilityObserverStub; iface_cast of an observer object elsewhere gives a proxy.
//
// Wire format (one-way, after the interface token): ON_CHANGE, no fields.

#include <cstdint>

#include "iremote_broker.h"

namespace Tarvo::AAFwk {

class IDataAbilityObserver : public IRemoteBroker {
public:
    DECLARE_INTERFACE_DESCRIPTOR(u"tarvo.aafwk.IDataAbilityObserver");

    enum Code : uint32_t { ON_CHANGE = 1 };

    virtual void OnChange() = 0;
};

}  // namespace Tarvo::AAFwk

#endif  // TARVO_DATA_SHARE_I_DATA_ABILITY_OBSERVER_H
