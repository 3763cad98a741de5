#include "peer_holder.h"

namespace Tarvo {

PeerHolder::PeerHolder(const sptr<IRemoteObject>& object) : remoteObject_(object) {}

sptr<IRemoteObject> PeerHolder::Remote()
{
    return remoteObject_;
}

}  // namespace Tarvo
