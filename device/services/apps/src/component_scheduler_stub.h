#ifndef ZEL_DEVICE_APPS_COMPONENT_SCHEDULER_STUB_H
#define ZEL_DEVICE_APPS_COMPONENT_SCHEDULER_STUB_H

// The component scheduler's object: answers GET_APP_TYPE from the catalogue's `type`, in the wire
// format of component_sched_interface.h (an unknown package or an unset type is not found).

#include "ipc_object_stub.h"
#include "package_catalog.h"

namespace Tarvo::Emu {

class ComponentSchedulerStub : public IPCObjectStub {
public:
    explicit ComponentSchedulerStub(const PackageCatalog& catalog);
    int OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override;

private:
    const PackageCatalog& catalog_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_APPS_COMPONENT_SCHEDULER_STUB_H
