// The device's requests to the service (and raw requests to games' callback objects), each tagged
// with its scenario line; one that never reaches its target's stub is traced as ipc.unsent.
#include "device.h"
#include "device_tap.h"
#include "input_text.h"
#include "ipc_transport.h"
#include "ipc_types.h"
#include "iservice_registry.h"
#include "raw_parcel.h"
#include "zel_manager_proxy.h"

namespace Tarvo::Emu {
namespace {
using Vantel::ZelManagerInterfaceCode;

uint32_t Code(ZelManagerInterfaceCode code)
{
    return static_cast<uint32_t>(code);
}

// Stands in front of the target for a proxy, to learn whether the proxy sent anything at all and
// what the transport answered.
class SendProbe : public IRemoteObject {
public:
    explicit SendProbe(sptr<IRemoteObject> target)
        : IRemoteObject(target->GetObjectDescriptor()), target_(std::move(target))
    {
    }

    int SendRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option) override
    {
        sent_ = true;
        status_ = target_->SendRequest(code, data, reply, option);
        return status_;
    }
    bool IsProxyObject() const override { return target_->IsProxyObject(); }
    bool IsObjectDead() const override { return target_->IsObjectDead(); }
    bool AddDeathRecipient(const sptr<DeathRecipient>& recipient) override
    {
        return target_->AddDeathRecipient(recipient);
    }
    bool RemoveDeathRecipient(const sptr<DeathRecipient>& recipient) override
    {
        return target_->RemoveDeathRecipient(recipient);
    }

    bool Sent() const { return sent_; }
    int Status() const { return status_; }

private:
    const sptr<IRemoteObject> target_;
    bool sent_ = false;
    int status_ = ERR_NONE;
};

// Fall-back values of ZelManagerProxy::SetThermalPolicy.
constexpr uint32_t THERMAL_NOT_READY = 2;
constexpr uint32_t THERMAL_TOKEN_FAILED = 3;
constexpr uint32_t THERMAL_FAILED = 0;

// Built by hand, answering as the proxy does: the proxy takes a map, which would sort the pairs
// and merge repeated keys.
int64_t SendThermalPairs(const sptr<IRemoteObject>& service, const std::vector<std::pair<uint32_t, uint32_t>>& map)
{
    if (service == nullptr) {
        return THERMAL_NOT_READY;
    }
    std::vector<uint32_t> keys;
    std::vector<uint32_t> values;
    for (const auto& [key, value] : map) {
        keys.push_back(key);
        values.push_back(value);
    }
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    if (!data.WriteInterfaceToken(Vantel::IZelManager::GetDescriptor())) {
        return THERMAL_TOKEN_FAILED;
    }
    if (!data.WriteUInt32Vector(keys) || !data.WriteUInt32Vector(values) ||
        service->SendRequest(Code(ZelManagerInterfaceCode::SET_THERMAL_POLICY), data, reply, option) != ERR_NONE) {
        return THERMAL_FAILED;
    }
    uint32_t result = THERMAL_FAILED;
    reply.ReadUint32(result);
    return result;
}

// A raw request answers with the transport's status, or null when nothing could be sent.
TraceValue SendRawRequest(const sptr<IRemoteObject>& target, const RawRequest& request,
                          const std::u16string& descriptor)
{
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(request.oneWay ? MessageOption::TF_ASYNC : MessageOption::TF_SYNC);
    if (target == nullptr || !WriteRawRequest(request, descriptor, data)) {
        return nullptr;
    }
    return int64_t{target->SendRequest(request.code, data, reply, option)};
}
}  // namespace

// Looked up anew each time, from the calling thread's process, as a client would.
sptr<IRemoteObject> Device::ServiceObject()
{
    sptr<ISystemAbilityManager> manager = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    return manager != nullptr ? manager->GetSystemAbility(ZEL_MANAGER_SERVICE_ID) : nullptr;
}

Device::Target Device::ServiceTarget()
{
    return Target{ServiceObject(), Vantel::IZelManager::GetDescriptor(), 0, {}};
}

// Reached means handled by the target's stub; for a one-way request, queued for it, since its
// handling comes later.
void Device::Deliver(const std::shared_ptr<VirtualProcess>& process, int line, uint32_t code, bool oneWay,
                     const std::function<Target()>& target, const Sender& send)
{
    ScopedProcess scope(process);
    IPCTransport::ScopedTag tag(static_cast<uint64_t>(line));
    Target found = target();
    sptr<SendProbe> probe = found.object != nullptr ? new SendProbe(found.object) : nullptr;
    tap_->Watch(static_cast<uint64_t>(line), found.descriptor, found.appPid, found.bundle);
    TraceValue result = send(probe);
    const bool reached =
        probe != nullptr && probe->Sent() && (oneWay ? probe->Status() == ERR_NONE : tap_->Delivered());
    if (!reached) {
        trace_.Emit("ipc.unsent",
                    {{"line", int64_t{line}}, {"code", static_cast<int64_t>(code)}, {"result", std::move(result)}});
    }
}

bool Device::ToService(const CallerSpec& caller, int line, uint32_t code, bool oneWay, const Sender& send,
                       std::string* error)
{
    auto process = CallerProcess(caller, error);
    if (process == nullptr) {
        return false;
    }
    Deliver(
        process, line, code, oneWay, [this] { return ServiceTarget(); }, send);
    return true;
}

bool Device::SendScene(int line, const CallerSpec& caller, const std::string& pkg, const std::string& scene,
                       uint32_t state, std::string* error)
{
    return ToService(
        caller, line, Code(ZelManagerInterfaceCode::SET_SCENE), true,
        [&](const sptr<IRemoteObject>& service) -> TraceValue {
            Vantel::ZelManagerProxy(service).SetScene(pkg, scene, state);
            return nullptr;
        },
        error);
}

bool Device::SendResolution(int line, const CallerSpec& caller, int32_t mode, int32_t flag, std::string* error)
{
    return ToService(
        caller, line, Code(ZelManagerInterfaceCode::CHANGE_RESOLUTION_MODE), false,
        [&](const sptr<IRemoteObject>& service) -> TraceValue {
            return int64_t{Vantel::ZelManagerProxy(service).ChangeResolutionMode(mode, flag)};
        },
        error);
}

bool Device::SendThermal(int line, const CallerSpec& caller, const std::vector<std::pair<uint32_t, uint32_t>>& map,
                         std::string* error)
{
    return ToService(
        caller, line, Code(ZelManagerInterfaceCode::SET_THERMAL_POLICY), false,
        [&](const sptr<IRemoteObject>& service) -> TraceValue { return SendThermalPairs(service, map); }, error);
}

bool Device::SendGameFps(int line, const CallerSpec& caller, const std::string& pkg, uint32_t fps, std::string* error)
{
    return ToService(
        caller, line, Code(ZelManagerInterfaceCode::SET_GAME_FPS_FOR_THERMAL_CONTROL), false,
        [&](const sptr<IRemoteObject>& service) -> TraceValue {
            return int64_t{Vantel::ZelManagerProxy(service).SetGameFpsForThermalControl(pkg, fps)};
        },
        error);
}

bool Device::Register(int line, const std::string& bundle, const std::string& callbackName, std::string* error)
{
    auto process = AppProcess(bundle);
    if (process == nullptr) {
        return Fail(error, "package " + Shown(bundle) + " is not installed");
    }
    sptr<Vantel::IZelCallbackInterface> callback;
    {
        ScopedProcess scope(process);
        callback = new GameCallback(tap_, bundle, callbackName);
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        callbacks_[bundle + "/" + callbackName] =
            Callback{static_cast<GameCallback*>(callback.GetRefPtr()), process->Pid()};
    }
    Deliver(
        process, line, Code(ZelManagerInterfaceCode::REGISTER_GAME_FPS_LISTENER), false,
        [this] { return ServiceTarget(); },
        [&](const sptr<IRemoteObject>& service) -> TraceValue {
            return int64_t{Vantel::ZelManagerProxy(service).RegisterGameFpsListener(callback)};
        });
    return true;
}

bool Device::SendRaw(int line, const RawRequest& request, std::string* error)
{
    auto process = CallerProcess(request.caller, error);
    if (process == nullptr) {
        return false;
    }
    std::function<Target()> target = [this] { return ServiceTarget(); };
    if (!request.bundle.empty()) {
        std::optional<Callback> callback;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (auto it = callbacks_.find(request.bundle + "/" + request.callback); it != callbacks_.end()) {
                callback = it->second;
            }
        }
        if (!callback) {
            return Fail(error,
                        "no callback " + Shown(request.callback) + " was registered for " + Shown(request.bundle));
        }
        target = [callback, &request] {
            // The calling process's own view of the object: a proxy, as a client gets it.
            MessageParcel carrier;
            carrier.WriteRemoteObject(callback->object->AsObject());
            return Target{carrier.ReadRemoteObject(), Vantel::IZelCallbackInterface::GetDescriptor(), callback->pid,
                          request.bundle};
        };
    }
    const std::u16string descriptor =
        request.bundle.empty() ? Vantel::IZelManager::GetDescriptor() : Vantel::IZelCallbackInterface::GetDescriptor();
    Deliver(process, line, request.code, request.oneWay, target,
            [&](const sptr<IRemoteObject>& object) { return SendRawRequest(object, request, descriptor); });
    return true;
}

}  // namespace Tarvo::Emu
