#ifndef TARVO_IPC_IREMOTE_PROXY_H
#define TARVO_IPC_IREMOTE_PROXY_H

// The base of an interface's proxy: it marshals each call and sends it to Remote().

#include "iremote_broker.h"
#include "peer_holder.h"

namespace Tarvo {

template <typename INTERFACE>
class IRemoteProxy : public PeerHolder, public INTERFACE {
public:
    explicit IRemoteProxy(const sptr<IRemoteObject>& object) : PeerHolder(object) {}
    ~IRemoteProxy() override = default;

    sptr<IRemoteObject> AsObject() override { return Remote(); }
};

}  // namespace Tarvo

#endif  // TARVO_IPC_IREMOTE_PROXY_H
