#ifndef ZEL_DEVICE_CONTROL_CLIENT_H
#define ZEL_DEVICE_CONTROL_CLIENT_H

// The client side of a serving device's control socket (ControlChannel): `zel_device send` and
// `zel_device trace`. What the device answers goes to out and err as it arrives; the result is
// the exit status the device gave (1 when the connection ended without one).

#include <ostream>
#include <string>
#include <vector>

namespace Tarvo::Emu {

int ControlRequest(const std::string& socketPath, const std::string& request, const std::vector<std::string>& lines,
                   std::ostream& out, std::ostream& err);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_CONTROL_CLIENT_H
