#ifndef ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_MANAGER_SERVICE_H
#define ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_MANAGER_SERVICE_H

#include <memory>

#include "device_context.h"
#include "iremote_object.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

// The display manager service (system ability 4607): one default display, id 0, shown on one
// screen, id 0, of 1260x2720 at density 560 to start. A resolution set on a known screen with
// non-zero values changes it and traces screen.resolution {width, height, density}; an unknown
// screen gives DM_ERROR_INVALID_SCREEN, a zero value DM_ERROR_INVALID_PARAM, and no event.
class DisplayManagerService {
public:
    static constexpr uint32_t INITIAL_WIDTH = 1260;
    static constexpr uint32_t INITIAL_HEIGHT = 2720;
    static constexpr uint32_t INITIAL_DENSITY = 560;

    explicit DisplayManagerService(DeviceContext& ctx);
    DisplayManagerService(const DisplayManagerService&) = delete;
    DisplayManagerService& operator=(const DisplayManagerService&) = delete;

    // Makes the service's process and publishes the service in it. Once.
    void Start();

private:
    DeviceContext& ctx_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<IRemoteObject> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_MANAGER_SERVICE_H
