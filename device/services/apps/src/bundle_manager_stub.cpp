#include "bundle_manager_stub.h"

#include "bundle_mgr_interface.h"
#include "ipc_types.h"

namespace Tarvo::Emu {
using namespace AppExecFwk;

BundleManagerStub::BundleManagerStub(const PackageCatalog& catalog)
    : IPCObjectStub(BUNDLE_MGR_DESCRIPTOR), catalog_(catalog)
{
}

int BundleManagerStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (code != GET_NAME_FOR_UID) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    int32_t uid = 0;
    if (data.ReadInterfaceToken() != BUNDLE_MGR_DESCRIPTOR || !data.ReadInt32(uid)) {
        return ERR_INVALID_VALUE;
    }
    std::optional<Package> package = catalog_.FindByUid(uid);
    if (!package) {
        return reply.WriteInt32(BUNDLE_MGR_ERR_UNKNOWN_UID) ? ERR_NONE : ERR_INVALID_VALUE;
    }
    return reply.WriteInt32(BUNDLE_MGR_OK) && reply.WriteString(package->bundle) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::Emu
