#ifndef TARVO_IPC_PEER_HOLDER_H
#define TARVO_IPC_PEER_HOLDER_H

// Holds the remote object an interface proxy sends its requests to.

#include "iremote_object.h"
#include "refbase.h"

namespace Tarvo {

class PeerHolder {
protected:
    explicit PeerHolder(const sptr<IRemoteObject>& object);
    virtual ~PeerHolder() = default;
    // The object given at construction (never changes, may be null).
    sptr<IRemoteObject> Remote();

private:
    const sptr<IRemoteObject> remoteObject_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_PEER_HOLDER_H
