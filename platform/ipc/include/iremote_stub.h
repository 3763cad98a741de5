#ifndef TARVO_IPC_IREMOTE_STUB_H
#define TARVO_IPC_IREMOTE_STUB_H

// The base of an interface's stub: the object is its own interface (iface_cast of it in its own
// process gives the stub back).

#include "ipc_object_stub.h"
#include "iremote_broker.h"

namespace Tarvo {

template <typename INTERFACE>
class IRemoteStub : public IPCObjectStub, public INTERFACE {
public:
    explicit IRemoteStub(bool serialInvokeFlag = false) : IPCObjectStub(INTERFACE::GetDescriptor(), serialInvokeFlag) {}
    ~IRemoteStub() override = default;

    sptr<IRemoteBroker> AsInterface() override { return sptr<IRemoteBroker>(static_cast<INTERFACE*>(this)); }
    sptr<IRemoteObject> AsObject() override { return sptr<IRemoteObject>(static_cast<IPCObjectStub*>(this)); }
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IREMOTE_STUB_H
