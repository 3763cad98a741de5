#ifndef ZEL_DEVICE_ZEL_DEVICE_APP_H
#define ZEL_DEVICE_ZEL_DEVICE_APP_H

// What zel_device does, apart from the process around it: reads the command line and the
// scenario, makes the device, plays, writes the outputs, and turns the result into the exit status
// (0 played and every expect held; 1 the device or the service failed; 2 usage or scenario
// errors, nothing played; 3 an expect failed). check-config exits 0 when the service would load the
// file, 2 when not. An interrupted run ends with 128 + the signal's number
// (see interrupt_cleanup.h).
//
// Contract:
//  - Scenario errors are printed on err, every one, as FILE:LINE: message.
//  - Unless --realtime, virtual time is installed before the factory is called.
//  - Output files are opened before anything is played; the trace and the chart are written also
//    when the run stops early.
//  - After a device failure (a hang, a reported failure, an exception out of the device) the device
//    may have threads stuck in it: DeviceAbandoned() turns true and the caller must end the process
//    without destroying this object.

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "command_line.h"
#include "device_control.h"
#include "device_factory.h"
#include "scenario.h"
#include "scenario_player.h"

namespace Tarvo::Emu {

using DeviceFactory = std::function<std::unique_ptr<DeviceControl>(const DeviceOptions&)>;

class ZelDeviceApp {
public:
    static constexpr int EXIT_OK = 0;
    static constexpr int EXIT_DEVICE_FAILED = 1;
    static constexpr int EXIT_SCENARIO_ERROR = 2;
    static constexpr int EXIT_EXPECT_FAILED = 3;
    static constexpr const char* VERSION = ZEL_VERSION;

    ZelDeviceApp(DeviceFactory factory, std::ostream& out, std::ostream& err);

    // args without the program name.
    int Main(const std::vector<std::string>& args);
    // How a serving device learns of SIGINT and SIGTERM: called with the function to call then,
    // and with an empty one when it no longer serves.
    void SetInterruptHook(std::function<void(std::function<void(int)>)> hook) { interruptHook_ = std::move(hook); }
    bool DeviceAbandoned() const { return abandoned_; }

private:
    int Check(const CommandLine& line);
    int CheckConfig(const CommandLine& line);
    int Run(const CommandLine& line);
    int Play(const CommandLine& line, const Scenario& scenario, std::ostream* trace);
    bool Load(const std::string& path, Scenario* scenario);
    int Failed(const std::string& message);
    int Serve(const CommandLine& line);
    int Send(const CommandLine& line);

    DeviceFactory factory_;
    std::ostream& out_;
    std::ostream& err_;
    std::unique_ptr<DeviceControl> device_;
    bool abandoned_ = false;
    std::function<void(std::function<void(int)>)> interruptHook_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_ZEL_DEVICE_APP_H
