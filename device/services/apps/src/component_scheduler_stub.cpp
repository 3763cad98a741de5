#include "component_scheduler_stub.h"

#include "component_sched_interface.h"
#include "ipc_types.h"

namespace Tarvo::Emu {
using namespace ComponentScheduler;

ComponentSchedulerStub::ComponentSchedulerStub(const PackageCatalog& catalog)
    : IPCObjectStub(COMPONENT_SCHED_DESCRIPTOR), catalog_(catalog)
{
}

int ComponentSchedulerStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                            MessageOption& option)
{
    if (code != GET_APP_TYPE) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    std::string bundle;
    if (data.ReadInterfaceToken() != COMPONENT_SCHED_DESCRIPTOR || !data.ReadString(bundle)) {
        return ERR_INVALID_VALUE;
    }
    std::optional<Package> package = catalog_.FindByBundle(bundle);
    if (!package || !package->type) {
        return reply.WriteInt32(COMPONENT_SCHED_ERR_NOT_FOUND) ? ERR_NONE : ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(COMPONENT_SCHED_OK) && reply.WriteInt32(*package->type) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::Emu
