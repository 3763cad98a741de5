#include "device_factory.h"

#include <cstdlib>

#include "crash_reporter.h"
#include "device.h"
#include "process_device.h"
#include "program_files.h"

namespace Tarvo::Emu {

std::unique_ptr<DeviceControl> MakeDevice(const DeviceOptions& options)
{
    InstallCrashReporter();
    DeviceSetup setup;
    setup.dataDir = options.dataDir;
    setup.keepDataDir = options.keepDataDir;
    setup.log = options.log;
    setup.scenarioDir = options.scenarioDir;
    // The library beside the executable unless the environment points elsewhere (a variant).
    const char* library = std::getenv("ZEL_SERVICE_LIBRARY");
    setup.serviceLibrary = library != nullptr ? library : OwnProgramFiles().serviceLibrary;
    setup.defaultConfig = OwnProgramFiles().defaultConfig;
    if (options.processes) {
        return std::make_unique<ProcessDevice>(
            ProcessDeviceSetup{std::move(setup), options.runDir, {}, !options.realtime});
    }
    return std::make_unique<Device>(std::move(setup));
}

}  // namespace Tarvo::Emu
