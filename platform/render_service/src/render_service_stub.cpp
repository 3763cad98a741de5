#include "render_service_stub.h"

#include "ipc_types.h"
#include "message_parcel.h"

namespace Tarvo::Vantel {

int RenderServiceStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (code < NOTIFY_PACKAGE_EVENT || code > NOTIFY_LIGHT_FACTOR_STATUS) {
        return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
    }
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        return ERR_INVALID_VALUE;
    }
    switch (code) {
        case NOTIFY_PACKAGE_EVENT:
            return HandlePackageEvent(data);
        case NOTIFY_REFRESH_RATE_EVENT:
            return HandleRefreshRateEvent(data);
        default:
            return HandleLightFactorStatus(data);
    }
}

int RenderServiceStub::HandlePackageEvent(MessageParcel& data)
{
    uint32_t listSize = 0;
    std::vector<std::string> packageList;
    if (!data.ReadUint32(listSize) || !data.ReadStringVector(&packageList)) {
        return ERR_INVALID_VALUE;
    }
    NotifyPackageEvent(listSize, packageList);
    return ERR_NONE;
}

int RenderServiceStub::HandleRefreshRateEvent(MessageParcel& data)
{
    EventInfo info;
    if (!data.ReadString(info.eventName) || !data.ReadBool(info.eventStatus) || !data.ReadUint32(info.minRefreshRate) ||
        !data.ReadUint32(info.maxRefreshRate) || !data.ReadString(info.description)) {
        return ERR_INVALID_VALUE;
    }
    NotifyRefreshRateEvent(info);
    return ERR_NONE;
}

int RenderServiceStub::HandleLightFactorStatus(MessageParcel& data)
{
    bool isSafe = false;
    if (!data.ReadBool(isSafe)) {
        return ERR_INVALID_VALUE;
    }
    NotifyLightFactorStatus(isSafe);
    return ERR_NONE;
}

}  // namespace Tarvo::Vantel
