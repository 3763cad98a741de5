#ifndef ZEL_DEVICE_APPS_BUNDLE_MANAGER_SERVICE_H
#define ZEL_DEVICE_APPS_BUNDLE_MANAGER_SERVICE_H

// The emulated bundle manager (system ability 401) in a process of its own: answers which bundle
// a uid belongs to, from the package catalogue (wire format in bundle_mgr_interface.h).
//
// Contract: the device calls it from one thread; the context outlives the service.

#include <cstdint>
#include <memory>

#include "device_context.h"
#include "refbase.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class BundleManagerStub;

class BundleManagerService {
public:
    static constexpr int32_t SA_ID = 401;

    explicit BundleManagerService(DeviceContext& ctx);
    ~BundleManagerService();
    BundleManagerService(const BundleManagerService&) = delete;
    BundleManagerService& operator=(const BundleManagerService&) = delete;

    // Makes the process and publishes the object; does nothing once started.
    void Start();
    std::shared_ptr<VirtualProcess> Process() const { return process_; }

private:
    DeviceContext& ctx_;
    std::shared_ptr<VirtualProcess> process_;
    sptr<BundleManagerStub> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_BUNDLE_MANAGER_SERVICE_H
