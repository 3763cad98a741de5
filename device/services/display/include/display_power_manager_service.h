#ifndef ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_POWER_MANAGER_SERVICE_H
#define ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_POWER_MANAGER_SERVICE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "device_context.h"
#include "iremote_object.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class DisplayPowerMgrStubImpl;

// The display power manager (system ability 3308), as far as the brightness listener goes (wire
// format in display_power_mgr_interface.h): it keeps the latest registered callback and its
// ambient-brightness thresholds, and on command tells that callback about a light change.
class DisplayPowerManagerService {
public:
    explicit DisplayPowerManagerService(DeviceContext& ctx);
    ~DisplayPowerManagerService();
    DisplayPowerManagerService(const DisplayPowerManagerService&) = delete;
    DisplayPowerManagerService& operator=(const DisplayPowerManagerService&) = delete;

    // Makes the service's process and publishes the service in it. Once.
    void Start();

    // Sends the registered callback, one-way from this service's process, a brightness change:
    // the light type, then the state (left out when nullopt, a malformed request on purpose).
    // False when no callback is registered or the request could not be queued.
    bool Light(uint32_t type, std::optional<bool> state);

    // The thresholds of the latest registration; empty before any.
    std::vector<int32_t> LastThresholds() const;
    bool HasCallback() const;

private:
    DeviceContext& ctx_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<DisplayPowerMgrStubImpl> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_DISPLAY_POWER_MANAGER_SERVICE_H
