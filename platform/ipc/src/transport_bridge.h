#ifndef TARVO_IPC_TRANSPORT_BRIDGE_H
#define TARVO_IPC_TRANSPORT_BRIDGE_H

// The installed transport, or null while the in-process driver carries requests.

#include "ipc_transport.h"

namespace Tarvo {

IPCTransport* InstalledTransport();

}  // namespace Tarvo

#endif  // TARVO_IPC_TRANSPORT_BRIDGE_H
