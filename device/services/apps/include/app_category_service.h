#ifndef ZEL_DEVICE_APPS_APP_CATEGORY_SERVICE_H
#define ZEL_DEVICE_APPS_APP_CATEGORY_SERVICE_H

// The emulated app-category service (system ability 1910) in a process of its own: classifies
// packages from the catalogue (games as package type 2, others as 1; unknown bundles left out;
// an empty request answers for every installed package).
//
// Contract: the device calls it from one thread; the context outlives the service.

#include <cstdint>
#include <memory>

#include "device_context.h"
#include "refbase.h"
#include "virtual_process.h"

namespace Tarvo::Emu {

class AppCategoryStub;

class AppCategoryService {
public:
    static constexpr int32_t SA_ID = 1910;

    explicit AppCategoryService(DeviceContext& ctx);
    ~AppCategoryService();
    AppCategoryService(const AppCategoryService&) = delete;
    AppCategoryService& operator=(const AppCategoryService&) = delete;

    // Makes the process and publishes the object; does nothing once started.
    void Start();
    // While down, every request still arrives and is answered with an error result. Up at first;
    // may be set before Start().
    void SetUp(bool up);
    std::shared_ptr<VirtualProcess> Process() const { return process_; }

private:
    DeviceContext& ctx_;
    bool up_ = true;
    std::shared_ptr<VirtualProcess> process_;
    sptr<AppCategoryStub> stub_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_APP_CATEGORY_SERVICE_H
