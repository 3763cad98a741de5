#include "zel_callback_stub.h"

#include "zel_log.h"

namespace Tarvo::Vantel {

int ZelCallbackStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    ZEL_LOGD("[ZelCallbackStub::OnRemoteRequest] cmd = %{public}d, flags= %{public}d", code, option.GetFlags());
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        ZEL_LOGE("[ZelCallbackStub::OnRemoteRequest] descriptor is not matched!");
        return ERR_REFUSED;
    }
    if (code == ON_GAME_FPS_CHANGE) {
        return OnGameFpsChangeStub(data, reply);
    }
    return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
}

int32_t ZelCallbackStub::OnGameFpsChange(uint32_t)
{
    return 0;
}

// The message names the manager's handler; clients and tools match on it as it is.
int32_t ZelCallbackStub::OnGameFpsChangeStub(MessageParcel& data, MessageParcel&)
{
    uint32_t targetFps = 0;
    if (!data.ReadUint32(targetFps)) {
        ZEL_LOGE("[ZelManagerStub::RegisterGameFpsListenerStub] read targetFps failed");
        return ERR_PARCEL;
    }
    OnGameFpsChange(targetFps);  // one-way: nobody waits for the status
    return 0;
}

}  // namespace Tarvo::Vantel
