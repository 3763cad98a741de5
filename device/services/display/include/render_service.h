#ifndef ZEL_DEVICE_SERVICES_DISPLAY_RENDER_SERVICE_H
#define ZEL_DEVICE_SERVICES_DISPLAY_RENDER_SERVICE_H

#include <memory>

#include "device_context.h"
#include "iremote_object.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

// The render service (system ability 10) with its frame-rate arbiter, seen from outside: every
// notice it receives becomes a trace event, in the order received:
//   NotifyPackageEvent       mox.package {pkgs}
//   NotifyRefreshRateEvent   mox.refresh {name, status, min, max, desc}
//   NotifyLightFactorStatus  mox.light {status}
// The device outlives the objects its services publish.
class RenderService {
public:
    explicit RenderService(DeviceContext& ctx);
    RenderService(const RenderService&) = delete;
    RenderService& operator=(const RenderService&) = delete;

    // Makes the service's process and publishes the service in it. Once.
    void Start();

private:
    DeviceContext& ctx_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<IRemoteObject> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SERVICES_DISPLAY_RENDER_SERVICE_H
