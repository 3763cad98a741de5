#include "zel_manager_proxy.h"

#include <vector>

#include "message_option.h"
#include "message_parcel.h"
#include "zel_log.h"

namespace Tarvo::Vantel {
namespace {
const BrokerDelegator<ZelManagerProxy> delegator;

constexpr int32_t RESOLUTION_FAILED = -1;
constexpr uint32_t NOT_READY = 2;
constexpr uint32_t TOKEN_FAILED = 3;
constexpr uint32_t SEND_FAILED = 5;
constexpr uint32_t THERMAL_POLICY_FAILED = 0;

uint32_t Code(ZelManagerInterfaceCode code)
{
    return static_cast<uint32_t>(code);
}

// Shared first steps of every operation; the log texts name the operation.
sptr<IRemoteObject> RemoteOrLog(const sptr<IRemoteObject>& remote, const char* operation)
{
    if (remote == nullptr) {
        ZEL_LOGE("[ZelManagerProxy::%{public}s] service is not ready yet!", operation);
    }
    return remote;
}

bool WriteToken(MessageParcel& data, const char* operation)
{
    if (!data.WriteInterfaceToken(IZelManager::GetDescriptor())) {
        ZEL_LOGE("[ZelManagerProxy::%{public}s] write descriptor failed!", operation);
        return false;
    }
    return true;
}
}  // namespace

ZelManagerProxy::ZelManagerProxy(const sptr<IRemoteObject>& impl) : Tarvo::IRemoteProxy<IZelManager>(impl) {}

void ZelManagerProxy::SetScene(const std::string& pkgName, const std::string& sceneName, uint32_t state)
{
    sptr<IRemoteObject> remote = RemoteOrLog(Remote(), "SetScene");
    MessageParcel data;
    if (remote == nullptr || !WriteToken(data, "SetScene")) {
        return;
    }
    if (!data.WriteString(pkgName)) {
        ZEL_LOGE("[ZelManagerProxy::SetScene] write pkgName failed");
        return;
    }
    if (!data.WriteString(sceneName)) {
        ZEL_LOGE("[ZelManagerProxy::SetScene] write sceneName failed");
        return;
    }
    if (!data.WriteUint32(state)) {
        ZEL_LOGE("[ZelManagerProxy::SetScene] write state failed");
        return;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_ASYNC, MessageOption::TF_WAIT_TIME);
    int ret = remote->SendRequest(Code(ZelManagerInterfaceCode::SET_SCENE), data, reply, option);
    if (ret != 0) {
        ZEL_LOGE("[ZelManagerProxy::SetScene] SendRequest is failed, error code: %d", ret);
    }
}

int32_t ZelManagerProxy::ChangeResolutionMode(int32_t mode, int32_t flag)
{
    sptr<IRemoteObject> remote = RemoteOrLog(Remote(), "ChangeResolutionMode");
    MessageParcel data;
    if (remote == nullptr || !WriteToken(data, "ChangeResolutionMode")) {
        return RESOLUTION_FAILED;
    }
    if (!data.WriteInt32(mode)) {
        ZEL_LOGE("[ZelManagerProxy::ChangeResolutionMode] write mode failed");
        return RESOLUTION_FAILED;
    }
    if (!data.WriteInt32(flag)) {
        ZEL_LOGE("[ZelManagerProxy::ChangeResolutionMode] write flag failed");
        return RESOLUTION_FAILED;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC, MessageOption::TF_WAIT_TIME);
    int ret = remote->SendRequest(Code(ZelManagerInterfaceCode::CHANGE_RESOLUTION_MODE), data, reply, option);
    if (ret != 0) {
        ZEL_LOGW("[ZelManagerProxy::ChangeResolutionMode] Send Request faild code = %{public}d", ret);
        return RESOLUTION_FAILED;
    }
    int32_t result = RESOLUTION_FAILED;
    if (!reply.ReadInt32(result)) {
        ZEL_LOGE("[ZelManagerProxy::ChangeResolutionMode] read result failed");
        return RESOLUTION_FAILED;
    }
    return result;
}

uint32_t ZelManagerProxy::SetThermalPolicy(std::map<uint32_t, uint32_t> map)
{
    sptr<IRemoteObject> remote = RemoteOrLog(Remote(), "SetThermalPolicy");
    if (remote == nullptr) {
        return NOT_READY;
    }
    if (map.empty()) {
        ZEL_LOGW("ZelManagerProxy::SetThermalPolicy data verify fail");
        return THERMAL_POLICY_FAILED;
    }
    MessageParcel data;
    if (!WriteToken(data, "SetThermalPolicy")) {
        return TOKEN_FAILED;
    }
    std::vector<uint32_t> keys;
    std::vector<uint32_t> values;
    for (const auto& [key, value] : map) {
        keys.push_back(key);
        values.push_back(value);
    }
    if (!data.WriteUInt32Vector(keys)) {
        ZEL_LOGE("[ZelManagerProxy::SetThermalPolicy] write keys failed!");
        return THERMAL_POLICY_FAILED;
    }
    if (!data.WriteUInt32Vector(values)) {
        ZEL_LOGE("[ZelManagerProxy::SetThermalPolicy] write values failed!");
        return THERMAL_POLICY_FAILED;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC, MessageOption::TF_WAIT_TIME);
    int ret = remote->SendRequest(Code(ZelManagerInterfaceCode::SET_THERMAL_POLICY), data, reply, option);
    if (ret != 0) {
        ZEL_LOGW("[ZelManagerProxy::SetThermalPolicy] Send Request faild code = %{public}d", ret);
        return THERMAL_POLICY_FAILED;
    }
    uint32_t result = THERMAL_POLICY_FAILED;
    if (!reply.ReadUint32(result)) {
        ZEL_LOGE("[ZelManagerProxy::SetThermalPolicy] read result failed");
        return THERMAL_POLICY_FAILED;
    }
    return result;
}

uint32_t ZelManagerProxy::RegisterGameFpsListener(sptr<IZelCallbackInterface>& callback)
{
    sptr<IRemoteObject> remote = RemoteOrLog(Remote(), "RegisterGameFpsListener");
    if (remote == nullptr) {
        return NOT_READY;
    }
    if (callback == nullptr) {
        ZEL_LOGW("[ZelManagerProxy::RegisterGameFpsListener] callback is null!");
        return SEND_FAILED;
    }
    MessageParcel data;
    if (!WriteToken(data, "RegisterGameFpsListener")) {
        return TOKEN_FAILED;
    }
    if (!data.WriteRemoteObject(callback->AsObject())) {
        ZEL_LOGE("[ZelManagerProxy::RegisterGameFpsListener] write callback failed!");
        return SEND_FAILED;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC, MessageOption::TF_WAIT_TIME);
    int ret = remote->SendRequest(Code(ZelManagerInterfaceCode::REGISTER_GAME_FPS_LISTENER), data, reply, option);
    if (ret != 0) {
        ZEL_LOGW("[ZelManagerProxy::RegisterGameFpsListener] Send Request faild code = %{public}d", ret);
        return SEND_FAILED;
    }
    uint32_t result = SEND_FAILED;
    if (!reply.ReadUint32(result)) {
        ZEL_LOGE("[ZelManagerProxy::RegisterGameFpsListener] read result failed");
        return SEND_FAILED;
    }
    return result;
}

uint32_t ZelManagerProxy::SetGameFpsForThermalControl(const std::string& pkgName, uint32_t fps)
{
    sptr<IRemoteObject> remote = RemoteOrLog(Remote(), "SetGameFpsForThermalControl");
    if (remote == nullptr) {
        return NOT_READY;
    }
    MessageParcel data;
    if (!WriteToken(data, "SetGameFpsForThermalControl")) {
        return TOKEN_FAILED;
    }
    if (!data.WriteString(pkgName)) {
        ZEL_LOGE("[ZelManagerProxy::SetGameFpsForThermalControl] write pkgName failed!");
        return SEND_FAILED;
    }
    if (!data.WriteUint32(fps)) {
        ZEL_LOGE("[ZelManagerProxy::SetGameFpsForThermalControl] write fps failed!");
        return SEND_FAILED;
    }
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC, MessageOption::TF_WAIT_TIME);
    int ret = remote->SendRequest(Code(ZelManagerInterfaceCode::SET_GAME_FPS_FOR_THERMAL_CONTROL), data, reply, option);
    if (ret != 0) {
        ZEL_LOGW("[ZelManagerProxy SetGameFpsForThermalControl] Send Request faild code = %{public}d", ret);
        return SEND_FAILED;
    }
    uint32_t result = SEND_FAILED;
    if (!reply.ReadUint32(result)) {
        ZEL_LOGE("[ZelManagerProxy::SetGameFpsForThermalControl] read result failed");
        return 0;  // unlike the other failures: what existing clients expect
    }
    return result;
}

}  // namespace Tarvo::Vantel
