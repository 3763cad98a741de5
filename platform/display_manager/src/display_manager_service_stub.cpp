#include "display_manager_service_stub.h"

#include "ipc_types.h"
#include "message_parcel.h"

namespace Tarvo::Vantel {

int DisplayManagerServiceStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply,
                                               MessageOption& option)
{
    if (code < GET_DEFAULT_DISPLAY_ID || code > SET_RESOLUTION) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    switch (code) {
        case GET_DEFAULT_DISPLAY_ID:
            return reply.WriteUint64(GetDefaultDisplayId()) ? ERR_NONE : ERR_INVALID_VALUE;
        case GET_SCREEN_INFO:
            return HandleGetScreenInfo(data, reply);
        case GET_ALL_SCREEN_INFOS:
            return HandleGetAllScreenInfos(reply);
        default:
            return HandleSetResolution(data, reply);
    }
}

int DisplayManagerServiceStub::HandleGetScreenInfo(MessageParcel& data, MessageParcel& reply)
{
    ScreenId screenId = 0;
    if (!data.ReadUint64(screenId)) {
        return ERR_INVALID_VALUE;
    }
    std::optional<ScreenInfo> info = GetScreenInfo(screenId);
    if (!reply.WriteInt32(info ? 1 : 0) || (info && !info->Marshalling(reply))) {
        return ERR_INVALID_VALUE;
    }
    return ERR_NONE;
}

int DisplayManagerServiceStub::HandleGetAllScreenInfos(MessageParcel& reply)
{
    std::vector<ScreenInfo> infos = GetAllScreenInfos();
    if (!reply.WriteInt32(static_cast<int32_t>(infos.size()))) {
        return ERR_INVALID_VALUE;
    }
    for (const auto& info : infos) {
        if (!info.Marshalling(reply)) {
            return ERR_INVALID_VALUE;
        }
    }
    return ERR_NONE;
}

int DisplayManagerServiceStub::HandleSetResolution(MessageParcel& data, MessageParcel& reply)
{
    ScreenId screenId = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t density = 0;
    if (!data.ReadUint64(screenId) || !data.ReadUint32(width) || !data.ReadUint32(height) ||
        !data.ReadUint32(density)) {
        return ERR_INVALID_VALUE;
    }
    DMError result = SetResolution(screenId, width, height, density);
    return reply.WriteInt32(static_cast<int32_t>(result)) ? ERR_NONE : ERR_INVALID_VALUE;
}

}  // namespace Tarvo::Vantel
