#ifndef ZEL_DEVICE_COMMAND_EXECUTOR_H
#define ZEL_DEVICE_COMMAND_EXECUTOR_H

// Hands one scenario command to the device: the DeviceControl operation it names, with the
// line number for requests (their ipc.done events carry it). Returns once the action has started;
// the player waits for quiet. `expect` and `end` are the player's own and do nothing here.

#include <string>

#include "device_control.h"
#include "scenario_command.h"

namespace Tarvo::Emu {

class CommandExecutor {
public:
    explicit CommandExecutor(DeviceControl& device) : device_(device) {}

    // False with the device's reason when it refused the command.
    bool Run(int line, const ScenarioCommand& command, std::string* error);

private:
    DeviceControl& device_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_COMMAND_EXECUTOR_H
