#ifndef ZEL_DEVICE_PROCESS_MODE_DEVICE_PROCESS_H
#define ZEL_DEVICE_PROCESS_MODE_DEVICE_PROCESS_H

// One real process of a device in real processes (internal command `zel_device process`):
//
//   zel_device process ROLE [ARG] --dir RUNDIR --data DIR [--log]
//
// ROLE: samgr; a system service (app_manager, bundle_manager, app_category, component_scheduler,
// render, display, power, params, common_events, settings); host (ARG: the service library);
// caller (ARG: system, native or shell); app (ARG: the bundle).
//
// The process takes its identity from the registry the controller filled for its real pid,
// installs the socket transport over RUNDIR before anything else, builds its part of the device,
// attaches to the controller's hub with its agent and answers controls until it is killed or the
// controller goes (its connection closes): then it exits.

#include <string>
#include <vector>

namespace Tarvo::Emu {

// args: what follows `process`. Returns the exit status (2 for bad arguments).
int RunDeviceProcess(const std::vector<std::string>& args);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_PROCESS_MODE_DEVICE_PROCESS_H
