#ifndef ZEL_DEVICE_DEVICE_FACTORY_H
#define ZEL_DEVICE_DEVICE_FACTORY_H

// How zel_device gets its device. The device itself is defined elsewhere (device/core); the
// player and the command line only ever see DeviceControl.

#include <memory>
#include <string>

#include "device_control.h"

namespace Tarvo::Emu {

struct DeviceOptions {
    std::string scenarioDir;   // the scenario's folder
    std::string dataDir;       // empty: a fresh temporary directory
    bool keepDataDir = false;  // true when dataDir was given: it outlives the run
    bool realtime = false;     // wall clock; otherwise virtual time is installed already, or by
                               // a device in processes (shared by them)
    bool log = false;          // platform log on stderr
    bool processes = false;    // every emulated process a real one
    std::string runDir;        // with processes: the run folder; empty: a temporary one
};

// A freshly powered-on device, not yet booted; null if it could not be made.
std::unique_ptr<DeviceControl> MakeDevice(const DeviceOptions& options);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_FACTORY_H
