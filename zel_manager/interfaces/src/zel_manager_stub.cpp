#include "zel_manager_stub.h"

#include <vector>

#include "access_token_kit.h"
#include "ipc_skeleton.h"
#include "tokenid_kit.h"
#include "zel_log.h"

namespace Tarvo::Vantel {
using Tarvo::Security::AccessToken::AccessTokenKit;
using Tarvo::Security::AccessToken::TokenIdKit;

ZelManagerStub::ZelManagerStub() : Tarvo::IRemoteStub<IZelManager>(false) {}

bool ZelManagerStub::CheckCallerIsSystemApp()
{
    if (TokenIdKit::IsSystemAppByFullTokenID(IPCSkeleton::GetCallingFullTokenID())) {
        return true;
    }
    return AccessTokenKit::GetTokenTypeFlag(IPCSkeleton::GetCallingTokenID()) != 0;
}

int ZelManagerStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (data.ReadInterfaceToken() != GetDescriptor()) {
        ZEL_LOGE("[ZelManagerStub::OnRemoteRequest] descriptor is not matched!");
        return ERR_REFUSED;
    }
    switch (static_cast<ZelManagerInterfaceCode>(code)) {
        case ZelManagerInterfaceCode::SET_SCENE:
            return SetSceneStub(data, reply);
        case ZelManagerInterfaceCode::CHANGE_RESOLUTION_MODE:
            return ChangeResolutionModeStub(data, reply);
        case ZelManagerInterfaceCode::SET_THERMAL_POLICY:
            return SetThermalPolicyStub(data, reply);
        case ZelManagerInterfaceCode::REGISTER_GAME_FPS_LISTENER:
            return RegisterGameFpsListenerStub(data, reply);
        case ZelManagerInterfaceCode::SET_GAME_FPS_FOR_THERMAL_CONTROL:
            return SetGameFpsForThermalControlStub(data, reply);
    }
    return IPCObjectStub::OnRemoteRequest(code, data, reply, option);
}

int32_t ZelManagerStub::SetSceneStub(MessageParcel& data, MessageParcel&)
{
    if (!CheckCallerIsSystemApp()) {
        ZEL_LOGE("[ZelManagerStub::SetSceneStub] permission verification failed.");
        return ERR_REFUSED;
    }
    std::string pkgName;
    if (!data.ReadString(pkgName)) {
        ZEL_LOGE("[ZelManagerStub::SetSceneStub] read pkgName failed");
        return ERR_PARCEL;
    }
    std::string sceneName;
    if (!data.ReadString(sceneName)) {
        ZEL_LOGE("[ZelManagerStub::SetSceneStub] read sceneName failed");
        return ERR_PARCEL;
    }
    uint32_t state = 0;
    if (!data.ReadUint32(state)) {
        ZEL_LOGE("[ZelManagerStub::SetSceneStub] read state failed");
        return ERR_PARCEL;
    }
    SetScene(pkgName, sceneName, state);
    return 0;
}

int32_t ZelManagerStub::ChangeResolutionModeStub(MessageParcel& data, MessageParcel& reply)
{
    if (!CheckCallerIsSystemApp()) {
        ZEL_LOGE("[ZelManagerStub::ChangeResolutionModeStub] permission verification failed.");
        return ERR_REFUSED;
    }
    int32_t mode = 0;
    if (!data.ReadInt32(mode)) {
        ZEL_LOGE("[ZelManagerStub::ChangeResolutionModeStub] read mode failed");
        return ERR_PARCEL;
    }
    int32_t flag = 0;
    if (!data.ReadInt32(flag)) {
        ZEL_LOGE("[ZelManagerStub::ChangeResolutionModeStub] read flag failed");
        return ERR_PARCEL;
    }
    if (!reply.WriteInt32(ChangeResolutionMode(mode, flag))) {
        ZEL_LOGE("[ZelManagerStub::ChangeResolutionModeStub] write result failed");
        return ERR_PARCEL;
    }
    return 0;
}

int32_t ZelManagerStub::SetThermalPolicyStub(MessageParcel& data, MessageParcel& reply)
{
    if (!CheckCallerIsSystemApp()) {
        ZEL_LOGE("[ZelManagerStub::SetThermalPolicyStub] permission verification failed.");
        return ERR_REFUSED;
    }
    std::vector<uint32_t> keys;
    if (!data.ReadUInt32Vector(&keys)) {
        ZEL_LOGE("[ZelManagerStub::SetThermalPolicyStub] read keys failed");
        return ERR_PARCEL;
    }
    std::vector<uint32_t> values;
    if (!data.ReadUInt32Vector(&values)) {
        ZEL_LOGE("[ZelManagerStub::SetThermalPolicyStub] read values failed");
        return ERR_PARCEL;
    }
    if (keys.empty() || keys.size() != values.size()) {
        reply.WriteUint32(0xFFFFFFFF);
        return ERR_PARCEL;
    }
    std::map<uint32_t, uint32_t> policy;
    for (size_t i = 0; i < keys.size(); ++i) {
        policy[keys[i]] = values[i];  // of two equal keys the later pair wins
    }
    if (!reply.WriteUint32(SetThermalPolicy(policy))) {
        ZEL_LOGE("[ZelManagerStub::SetThermalPolicyStub] write result failed");
        return ERR_PARCEL;
    }
    return 0;
}

// Deliberately the inverse rule: only ordinary applications register, and the service takes the
// package from the calling uid, so a game can only register for itself.
int32_t ZelManagerStub::RegisterGameFpsListenerStub(MessageParcel& data, MessageParcel& reply)
{
    if (CheckCallerIsSystemApp()) {
        ZEL_LOGE("[ZelManagerStub::RegisterGameFpsListenerStub] permission verification failed.");
        return ERR_REFUSED;
    }
    sptr<IZelCallbackInterface> callback = iface_cast<IZelCallbackInterface>(data.ReadRemoteObject());
    if (callback == nullptr) {
        ZEL_LOGE("[ZelManagerStub::RegisterGameFpsListenerStub] read callback failed.");
        return ERR_PARCEL;
    }
    if (!reply.WriteUint32(RegisterGameFpsListener(callback))) {
        ZEL_LOGE("[ZelManagerStub::SetThermalPolicyStub] write result failed");
        return ERR_PARCEL;
    }
    return 0;
}

int32_t ZelManagerStub::SetGameFpsForThermalControlStub(MessageParcel& data, MessageParcel& reply)
{
    if (!CheckCallerIsSystemApp()) {
        ZEL_LOGE("[ZelManagerStub::SetGameFpsForThermalControlStub] permission verification failed.");
        return ERR_REFUSED;
    }
    std::string pkgName;
    if (!data.ReadString(pkgName)) {
        ZEL_LOGE("[ZelManagerStub::RegisterGameFpsListenerStub] read pkgName failed");
        return ERR_PARCEL;
    }
    uint32_t fps = 0;
    if (!data.ReadUint32(fps)) {
        ZEL_LOGE("[ZelManagerStub::RegisterGameFpsListenerStub] read fps failed");
        return ERR_PARCEL;
    }
    if (!reply.WriteUint32(SetGameFpsForThermalControl(pkgName, fps))) {
        ZEL_LOGE("[ZelManagerStub::RegisterGameFpsListenerStub] write result failed");
        return ERR_PARCEL;
    }
    return 0;
}

}  // namespace Tarvo::Vantel
