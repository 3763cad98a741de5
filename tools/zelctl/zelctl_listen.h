#ifndef ZELCTL_LISTEN_H
#define ZELCTL_LISTEN_H

#include "zel_manager_proxy.h"
#include "zelctl_args.h"
#include "zelctl_client.h"

namespace Tarvo::Zelctl {

// Before any thread starts: SIGINT and SIGTERM wait for Listen instead of ending the process.
void BlockStopSignals();
// Registers a callback and prints one line per rate it is told (UTC time, bundle, callback name,
// fps) until SIGINT or SIGTERM; then the device forgets this process. Returns the exit status.
int Listen(const Command& command, Vantel::ZelManagerProxy& proxy, DeviceLink& link);

}  // namespace Tarvo::Zelctl

#endif  // ZELCTL_LISTEN_H
