#ifndef ZEL_DEVICE_APPS_COMPONENT_SCHEDULER_SERVICE_H
#define ZEL_DEVICE_APPS_COMPONENT_SCHEDULER_SERVICE_H

// The emulated component scheduler (system ability 1920) in a process of its own: reports the
// catalogue's `type` of a package (an unset type or an unknown package is not found).
//
// Contract: the device calls it from one thread; the context outlives the service.

#include <cstdint>
#include <memory>

#include "device_context.h"
#include "refbase.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class ComponentSchedulerStub;

class ComponentSchedulerService {
public:
    static constexpr int32_t SA_ID = 1920;

    explicit ComponentSchedulerService(DeviceContext& ctx);
    ~ComponentSchedulerService();
    ComponentSchedulerService(const ComponentSchedulerService&) = delete;
    ComponentSchedulerService& operator=(const ComponentSchedulerService&) = delete;

    // Makes the process and publishes the object; does nothing once started.
    void Start();
    std::shared_ptr<VirtualProcess> Process() const { return process_; }

private:
    DeviceContext& ctx_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<ComponentSchedulerStub> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_COMPONENT_SCHEDULER_SERVICE_H
