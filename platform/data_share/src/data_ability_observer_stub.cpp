#include "data_ability_observer_stub.h"

#include "ipc_types.h"

namespace Tarvo::AAFwk {

int DataAbilityObserverStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                             MessageOption& option)
{
    if (code != ON_CHANGE) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    // The observer is the application's code; whatever it throws stays on this side.
    try {
        OnChange();
    } catch (...) {
    }
    return ERR_NONE;
}

}  // namespace Tarvo::AAFwk
