#ifndef ZEL_DEVICE_APPS_APP_CATEGORY_STUB_H
#define ZEL_DEVICE_APPS_APP_CATEGORY_STUB_H

// The app-category service's object: classifies packages from the catalogue (a game is
// PACKAGE_TYPE_GAME, anything else PACKAGE_TYPE_APP), in the wire format of
// app_category_interface.h. While down it still decodes each request but answers
// CATEGORY_ERR_SERVICE_DOWN.

#include <atomic>
#include <string>
#include <vector>

#include "app_category_info.h"
#include "ipc_object_stub.h"
#include "package_catalog.h"

namespace Tarvo::Emu {

class AppCategoryStub : public IPCObjectStub {
public:
    explicit AppCategoryStub(const PackageCatalog& catalog);
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;
    void SetUp(bool up) { up_ = up; }

private:
    // Installed packages among `bundles` (every installed package for none), in request order.
    std::vector<QuillonServiceClient::AppCategoryInfo> Classify(const std::vector<std::string>& bundles) const;

    const PackageCatalog& catalog_;
    std::atomic<bool> up_{true};
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_APP_CATEGORY_STUB_H
