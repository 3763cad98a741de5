#include "display_manager_service_proxy.h"

#include "ipc_types.h"
#include "message_option.h"
#include "message_parcel.h"

namespace Tarvo::Vantel {
namespace {
const BrokerDelegator<DisplayManagerServiceProxy> delegator;
}

DisplayManagerServiceProxy::DisplayManagerServiceProxy(const sptr<IRemoteObject>& impl)
    : IRemoteProxy<IDisplayManagerService>(impl)
{
}

bool DisplayManagerServiceProxy::Call(uint32_t code, MessageParcel& data, MessageParcel& reply)
{
    sptr<IRemoteObject> remote = Remote();
    if (remote == nullptr) {
        return false;
    }
    MessageOption option(MessageOption::TF_SYNC, MessageOption::TF_WAIT_TIME);
    return remote->SendRequest(code, data, reply, option) == ERR_NONE;
}

DisplayId DisplayManagerServiceProxy::GetDefaultDisplayId()
{
    MessageParcel data;
    MessageParcel reply;
    DisplayId id = DISPLAY_ID_INVALID;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !Call(GET_DEFAULT_DISPLAY_ID, data, reply) ||
        !reply.ReadUint64(id)) {
        return DISPLAY_ID_INVALID;
    }
    return id;
}

std::optional<ScreenInfo> DisplayManagerServiceProxy::GetScreenInfo(ScreenId screenId)
{
    MessageParcel data;
    MessageParcel reply;
    int32_t found = 0;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteUint64(screenId) ||
        !Call(GET_SCREEN_INFO, data, reply) || !reply.ReadInt32(found) || found == 0) {
        return std::nullopt;
    }
    ScreenInfo info;
    if (!ScreenInfo::Unmarshalling(reply, info)) {
        return std::nullopt;
    }
    return info;
}

std::vector<ScreenInfo> DisplayManagerServiceProxy::GetAllScreenInfos()
{
    MessageParcel data;
    MessageParcel reply;
    int32_t count = 0;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !Call(GET_ALL_SCREEN_INFOS, data, reply) ||
        !reply.ReadInt32(count)) {
        return {};
    }
    // Grows only by what was actually read, so a lying count cannot make it allocate.
    std::vector<ScreenInfo> infos;
    for (int32_t i = 0; i < count; ++i) {
        ScreenInfo info;
        if (!ScreenInfo::Unmarshalling(reply, info)) {
            return {};
        }
        infos.push_back(info);
    }
    return infos;
}

DMError DisplayManagerServiceProxy::SetResolution(ScreenId screenId, uint32_t width, uint32_t height, uint32_t density)
{
    MessageParcel data;
    MessageParcel reply;
    int32_t result = 0;
    if (!data.WriteInterfaceToken(GetDescriptor()) || !data.WriteUint64(screenId) || !data.WriteUint32(width) ||
        !data.WriteUint32(height) || !data.WriteUint32(density) || !Call(SET_RESOLUTION, data, reply) ||
        !reply.ReadInt32(result)) {
        return DMError::DM_ERROR_IPC_FAILED;
    }
    return static_cast<DMError>(result);
}

}  // namespace Tarvo::Vantel
