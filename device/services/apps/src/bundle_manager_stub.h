#ifndef ZEL_DEVICE_APPS_BUNDLE_MANAGER_STUB_H
#define ZEL_DEVICE_APPS_BUNDLE_MANAGER_STUB_H

// The bundle manager's object: answers GET_NAME_FOR_UID from the catalogue, in the wire format
// of bundle_mgr_interface.h.

#include "ipc_object_stub.h"
#include "package_catalog.h"

namespace Tarvo::Emu {

class BundleManagerStub : public IPCObjectStub {
public:
    explicit BundleManagerStub(const PackageCatalog& catalog);
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    const PackageCatalog& catalog_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_BUNDLE_MANAGER_STUB_H
