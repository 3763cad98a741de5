#include "request_order.h"

#include "input_text.h"
#include "ipc_types.h"
#include "iservice_registry.h"
#include "json_pointer.h"
#include "message_option.h"
#include "raw_parcel.h"
#include "zel_manager_proxy.h"

namespace Tarvo::Emu {
namespace {
using Vantel::ZelManagerInterfaceCode;
constexpr int32_t ZEL_MANAGER_SERVICE_ID = 65958;

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

// The dump's text, or the status when none came back.
TraceValue SendDump(const sptr<IRemoteObject>& service)
{
    if (service == nullptr) {
        return nullptr;
    }
    MessageParcel data;
    MessageParcel reply;
    MessageOption option(MessageOption::TF_SYNC);
    if (!data.WriteInterfaceToken(Vantel::IZelManager::GetDescriptor()) || !data.WriteInt32(1) ||
        !data.WriteString16(u"--json")) {
        return nullptr;
    }
    const int status = service->SendRequest(DUMP_TRANSACTION, data, reply, option);
    int32_t result = 0;
    std::string text;
    if (status != ERR_NONE || !reply.ReadInt32(result) || !reply.ReadString(text)) {
        return int64_t{status};
    }
    return text;
}

TraceValue Send(const RequestOrder& order, const sptr<IRemoteObject>& target, const sptr<IRemoteObject>& callback)
{
    Vantel::ZelManagerProxy proxy(target);
    switch (order.kind) {
        case RequestOrder::Kind::SCENE:
            proxy.SetScene(order.name, order.scene, order.value);
            return nullptr;
        case RequestOrder::Kind::RESOLUTION:
            return int64_t{proxy.ChangeResolutionMode(order.mode, order.flag)};
        case RequestOrder::Kind::THERMAL:
            return SendThermalPairs(target, order.thermal);
        case RequestOrder::Kind::GAME_FPS:
            return int64_t{proxy.SetGameFpsForThermalControl(order.name, order.value)};
        case RequestOrder::Kind::REGISTER: {
            sptr<Vantel::IZelCallbackInterface> listener = iface_cast<Vantel::IZelCallbackInterface>(callback);
            return int64_t{proxy.RegisterGameFpsListener(listener)};
        }
        case RequestOrder::Kind::DUMP:
            return SendDump(target);
        case RequestOrder::Kind::RAW:
            break;
    }
    return SendRawRequest(target, order.raw, order.TargetDescriptor());
}

RequestOrder Order(RequestOrder::Kind kind, int line)
{
    RequestOrder order;
    order.kind = kind;
    order.line = line;
    return order;
}
}  // namespace

uint32_t RequestOrder::Code() const
{
    switch (kind) {
        case Kind::SCENE:
            return Emu::Code(ZelManagerInterfaceCode::SET_SCENE);
        case Kind::RESOLUTION:
            return Emu::Code(ZelManagerInterfaceCode::CHANGE_RESOLUTION_MODE);
        case Kind::THERMAL:
            return Emu::Code(ZelManagerInterfaceCode::SET_THERMAL_POLICY);
        case Kind::GAME_FPS:
            return Emu::Code(ZelManagerInterfaceCode::SET_GAME_FPS_FOR_THERMAL_CONTROL);
        case Kind::REGISTER:
            return Emu::Code(ZelManagerInterfaceCode::REGISTER_GAME_FPS_LISTENER);
        case Kind::DUMP:
            return DUMP_TRANSACTION;
        case Kind::RAW:
            break;
    }
    return raw.code;
}

bool RequestOrder::OneWay() const
{
    return kind == Kind::SCENE || (kind == Kind::RAW && raw.oneWay);
}

std::u16string RequestOrder::TargetDescriptor() const
{
    return kind == Kind::RAW && !raw.bundle.empty() ? Vantel::IZelCallbackInterface::GetDescriptor()
                                                    : Vantel::IZelManager::GetDescriptor();
}

RequestOrder SceneOrder(int line, const std::string& pkg, const std::string& scene, uint32_t state)
{
    RequestOrder order = Order(RequestOrder::Kind::SCENE, line);
    order.name = pkg;
    order.scene = scene;
    order.value = state;
    return order;
}

RequestOrder ResolutionOrder(int line, int32_t mode, int32_t flag)
{
    RequestOrder order = Order(RequestOrder::Kind::RESOLUTION, line);
    order.mode = mode;
    order.flag = flag;
    return order;
}

RequestOrder ThermalOrder(int line, const std::vector<std::pair<uint32_t, uint32_t>>& map)
{
    RequestOrder order = Order(RequestOrder::Kind::THERMAL, line);
    order.thermal = map;
    return order;
}

RequestOrder GameFpsOrder(int line, const std::string& pkg, uint32_t fps)
{
    RequestOrder order = Order(RequestOrder::Kind::GAME_FPS, line);
    order.name = pkg;
    order.value = fps;
    return order;
}

RequestOrder RegisterOrder(int line, const std::string& callbackName)
{
    RequestOrder order = Order(RequestOrder::Kind::REGISTER, line);
    order.name = callbackName;
    return order;
}

RequestOrder RawOrder(int line, const RawRequest& request)
{
    RequestOrder order = Order(RequestOrder::Kind::RAW, line);
    order.raw = request;
    return order;
}

RequestOrder DumpOrder(int line)
{
    return Order(RequestOrder::Kind::DUMP, line);
}

std::string NoCallback(const RawRequest& request)
{
    return "no callback " + Shown(request.callback) + " was registered for " + Shown(request.bundle);
}

// Looked up anew each time, from the calling thread's process, as a client would.
sptr<IRemoteObject> LookUpService()
{
    sptr<ISystemAbilityManager> manager = SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    return manager != nullptr ? manager->GetSystemAbility(ZEL_MANAGER_SERVICE_ID) : nullptr;
}

SendOutcome SendOrder(const RequestOrder& order, const sptr<IRemoteObject>& target, const sptr<IRemoteObject>& callback)
{
    sptr<SendProbe> probe = target != nullptr ? new SendProbe(target) : nullptr;
    SendOutcome outcome;
    outcome.result = Send(order, probe, callback);
    outcome.sent = probe != nullptr && probe->Sent();
    outcome.status = probe != nullptr ? probe->Status() : ERR_NONE;
    return outcome;
}

void TraceUnlessReached(Trace& trace, const RequestOrder& order, const SendOutcome& outcome, bool delivered)
{
    const bool reached = outcome.sent && (order.OneWay() ? outcome.status == ERR_NONE : delivered);
    if (!reached) {
        trace.Emit(
            "ipc.unsent",
            {{"line", int64_t{order.line}}, {"code", static_cast<int64_t>(order.Code())}, {"result", outcome.result}});
    }
}

void TraceDump(Trace& trace, const RequestOrder& order, const SendOutcome& outcome)
{
    const auto* text = std::get_if<std::string>(&outcome.result);
    if (text == nullptr) {
        return;  // traced as ipc.unsent, or the service refused it (ipc.done tells)
    }
    std::string json = *text;
    while (!json.empty() && json.back() == '\n') {
        json.pop_back();
    }
    // Written into the trace as it is only when it is the object it should be.
    TraceValue state = IsJsonObject(json) ? TraceValue{TraceObject{json}} : TraceValue{*text};
    trace.Emit("dump", {{"line", int64_t{order.line}}, {"state", std::move(state)}});
}

}  // namespace Tarvo::Emu
