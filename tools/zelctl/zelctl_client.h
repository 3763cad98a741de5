#ifndef ZELCTL_CLIENT_H
#define ZELCTL_CLIENT_H

// How zelctl reaches a serving device: the device adopts this process (it answers the control
// request `adopt CALLER` with the emulated pid it registered for our real pid), then the socket
// transport over the run folder finds the service through the device's service manager.

#include <string>

#include "iremote_object.h"

namespace Tarvo::Zelctl {

enum Status { OK = 0, REFUSED = 1, USAGE = 2, NO_DEVICE = 3 };

// $XDG_RUNTIME_DIR/zel_device, else <temporary directory>/zel_device-<uid>, as zel_device serves.
std::string DefaultRunDir();

class DeviceLink {
public:
    explicit DeviceLink(std::string runDir) : runDir_(std::move(runDir)) {}
    // Removes what Join registered: the device forgets this process.
    ~DeviceLink();
    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;

    // Acts as `caller` on the device; the status says why not, with the reason in `error`.
    Status Join(const std::string& caller, std::string* error);
    // The manager service (65958), or null with the reason.
    sptr<IRemoteObject> Manager(std::string* error);
    // The device forgets this process now (also done by the destructor).
    void Leave();

private:
    Status Adopt(const std::string& caller, std::string* error);

    const std::string runDir_;
    bool joined_ = false;
};

}  // namespace Tarvo::Zelctl

#endif  // ZELCTL_CLIENT_H
