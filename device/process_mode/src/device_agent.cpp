#include "device_agent.h"

#include "json_pointer.h"

namespace Tarvo::Emu {
namespace {
// A count of elements of at least `minSize` bytes each, checked against what is left.
bool ReadCount(MessageParcel& data, size_t minSize, uint32_t* count)
{
    return data.ReadUint32(*count) && static_cast<size_t>(*count) * minSize <= data.GetReadableBytes();
}

bool WriteOptionalText(const std::optional<std::string>& text, MessageParcel& data)
{
    return data.WriteBool(text.has_value()) && data.WriteString(text.value_or(""));
}

bool ReadOptionalText(MessageParcel& data, std::optional<std::string>* text)
{
    bool present = false;
    std::string value;
    if (!data.ReadBool(present) || !data.ReadString(value)) {
        return false;
    }
    *text = present ? std::optional<std::string>(std::move(value)) : std::nullopt;
    return true;
}

bool WriteObject(const sptr<IRemoteObject>& object, MessageParcel& data)
{
    return data.WriteBool(object != nullptr) && (object == nullptr || data.WriteRemoteObject(object));
}

bool ReadObject(MessageParcel& data, sptr<IRemoteObject>* object)
{
    bool present = false;
    if (!data.ReadBool(present)) {
        return false;
    }
    *object = present ? data.ReadRemoteObject() : nullptr;
    return !present || *object != nullptr;
}

bool WritePackage(const Package& package, MessageParcel& data)
{
    return data.WriteString(package.bundle) && data.WriteInt32(package.uid) && data.WriteBool(package.game) &&
           data.WriteBool(package.system) && data.WriteBool(package.type.has_value()) &&
           data.WriteInt32(package.type.value_or(0));
}

bool ReadPackage(MessageParcel& data, Package* package)
{
    bool typed = false;
    int32_t type = 0;
    if (!data.ReadString(package->bundle) || !data.ReadInt32(package->uid) || !data.ReadBool(package->game) ||
        !data.ReadBool(package->system) || !data.ReadBool(typed) || !data.ReadInt32(type)) {
        return false;
    }
    package->type = typed ? std::optional<int32_t>(type) : std::nullopt;
    return true;
}

bool WriteRaw(const RawRequest& raw, MessageParcel& data)
{
    bool ok = data.WriteInt32(static_cast<int32_t>(raw.caller.kind)) && data.WriteString(raw.caller.bundle) &&
              data.WriteUint32(raw.code) && data.WriteBool(raw.writeToken) && data.WriteBool(raw.token.has_value()) &&
              data.WriteString16(raw.token.value_or(u"")) && data.WriteBool(raw.oneWay) &&
              data.WriteString(raw.bundle) && data.WriteString(raw.callback) &&
              data.WriteUint32(static_cast<uint32_t>(raw.fields.size()));
    for (size_t i = 0; ok && i < raw.fields.size(); ++i) {
        const RawField& field = raw.fields[i];
        ok = data.WriteInt32(static_cast<int32_t>(field.kind)) && data.WriteString(field.text) &&
             data.WriteUInt32Vector(field.words);
    }
    return ok;
}

bool ReadRawField(MessageParcel& data, RawField* field)
{
    int32_t kind = 0;
    if (!data.ReadInt32(kind) || kind < 0 || kind > static_cast<int32_t>(RawField::Kind::BYTES)) {
        return false;
    }
    field->kind = static_cast<RawField::Kind>(kind);
    return data.ReadString(field->text) && data.ReadUInt32Vector(&field->words);
}

bool ReadRaw(MessageParcel& data, RawRequest* raw)
{
    int32_t kind = 0;
    bool hasToken = false;
    std::u16string token;
    uint32_t count = 0;
    if (!data.ReadInt32(kind) || kind < 0 || kind > static_cast<int32_t>(CallerSpec::Kind::BUNDLE) ||
        !data.ReadString(raw->caller.bundle) || !data.ReadUint32(raw->code) || !data.ReadBool(raw->writeToken) ||
        !data.ReadBool(hasToken) || !data.ReadString16(token) || !data.ReadBool(raw->oneWay) ||
        !data.ReadString(raw->bundle) || !data.ReadString(raw->callback) || !ReadCount(data, 12, &count)) {
        return false;
    }
    raw->caller.kind = static_cast<CallerSpec::Kind>(kind);
    raw->token = hasToken ? std::optional<std::u16string>(std::move(token)) : std::nullopt;
    raw->fields.assign(count, RawField{});
    for (RawField& field : raw->fields) {
        if (!ReadRawField(data, &field)) {
            return false;
        }
    }
    return true;
}

bool WriteOrder(const RequestOrder& order, MessageParcel& data)
{
    std::vector<uint32_t> pairs;
    for (const auto& [key, value] : order.thermal) {
        pairs.push_back(key);
        pairs.push_back(value);
    }
    return data.WriteUint32(static_cast<uint32_t>(order.kind)) && data.WriteInt32(order.line) &&
           data.WriteString(order.name) && data.WriteString(order.scene) && data.WriteUint32(order.value) &&
           data.WriteInt32(order.mode) && data.WriteInt32(order.flag) && data.WriteUInt32Vector(pairs) &&
           WriteRaw(order.raw, data);
}

bool ReadOrder(MessageParcel& data, RequestOrder* order)
{
    uint32_t kind = 0;
    std::vector<uint32_t> pairs;
    if (!data.ReadUint32(kind) || kind == 0 || kind > RequestOrder::kLastKind || !data.ReadInt32(order->line) ||
        !data.ReadString(order->name) || !data.ReadString(order->scene) || !data.ReadUint32(order->value) ||
        !data.ReadInt32(order->mode) || !data.ReadInt32(order->flag) || !data.ReadUInt32Vector(&pairs) ||
        pairs.size() % 2 != 0 || !ReadRaw(data, &order->raw)) {
        return false;
    }
    order->kind = static_cast<RequestOrder::Kind>(kind);
    order->thermal.clear();
    for (size_t i = 0; i < pairs.size(); i += 2) {
        order->thermal.emplace_back(pairs[i], pairs[i + 1]);
    }
    return true;
}

enum ValueKind : int32_t { NONE, FLAG, NUMBER, TEXT, TEXTS, OBJECT };

bool WriteValue(const TraceValue& value, MessageParcel& data)
{
    if (const auto* flag = std::get_if<bool>(&value)) {
        return data.WriteInt32(FLAG) && data.WriteBool(*flag);
    }
    if (const auto* number = std::get_if<int64_t>(&value)) {
        return data.WriteInt32(NUMBER) && data.WriteInt64(*number);
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return data.WriteInt32(TEXT) && data.WriteString(*text);
    }
    if (const auto* texts = std::get_if<std::vector<std::string>>(&value)) {
        return data.WriteInt32(TEXTS) && data.WriteStringVector(*texts);
    }
    if (const auto* object = std::get_if<TraceObject>(&value)) {
        return data.WriteInt32(OBJECT) && data.WriteString(object->json);
    }
    return data.WriteInt32(NONE);
}

bool ReadValue(MessageParcel& data, TraceValue* value)
{
    int32_t kind = NONE;
    if (!data.ReadInt32(kind)) {
        return false;
    }
    bool ok = true;
    switch (kind) {
        case NONE:
            *value = nullptr;
            break;
        case FLAG:
            ok = data.ReadBool(value->emplace<bool>());
            break;
        case NUMBER:
            ok = data.ReadInt64(value->emplace<int64_t>());
            break;
        case TEXT:
            ok = data.ReadString(value->emplace<std::string>());
            break;
        case TEXTS:
            ok = data.ReadStringVector(&value->emplace<std::vector<std::string>>());
            break;
        case OBJECT:
            // Written into the trace as it is, so it must be an object.
            ok =
                data.ReadString(value->emplace<TraceObject>().json) && IsJsonObject(std::get<TraceObject>(*value).json);
            break;
        default:
            ok = false;
    }
    return ok;
}
}  // namespace

bool WriteControl(const AgentControl& control, MessageParcel& data)
{
    return data.WriteInterfaceToken(kAgentDescriptor) && data.WriteUint32(static_cast<uint32_t>(control.code)) &&
           data.WriteString(control.key) && data.WriteString(control.value) &&
           WriteOptionalText(control.bundle, data) && data.WriteBool(control.number.has_value()) &&
           data.WriteInt32(control.number.value_or(0)) && data.WriteInt32(control.id) &&
           data.WriteInt32(control.state) && data.WriteBool(control.flag) && data.WriteInt64(control.time) &&
           WritePackage(control.package, data) && WriteOrder(control.order, data) && WriteObject(control.object, data);
}

bool ReadControl(MessageParcel& data, AgentControl* control)
{
    uint32_t code = 0;
    bool numbered = false;
    int32_t number = 0;
    if (data.ReadInterfaceToken() != kAgentDescriptor || !data.ReadUint32(code) || code == 0 || code > kLastAgentCode ||
        !data.ReadString(control->key) || !data.ReadString(control->value) ||
        !ReadOptionalText(data, &control->bundle) || !data.ReadBool(numbered) || !data.ReadInt32(number) ||
        !data.ReadInt32(control->id) || !data.ReadInt32(control->state) || !data.ReadBool(control->flag) ||
        !data.ReadInt64(control->time) || !ReadPackage(data, &control->package) || !ReadOrder(data, &control->order)) {
        return false;
    }
    control->code = static_cast<AgentCode>(code);
    control->number = numbered ? std::optional<int32_t>(number) : std::nullopt;
    return ReadObject(data, &control->object);
}

bool WriteReply(const AgentReply& reply, MessageParcel& data)
{
    return data.WriteBool(reply.ok) && data.WriteString(reply.error) && data.WriteBool(reply.outcome.sent) &&
           data.WriteInt32(reply.outcome.status) && WriteValue(reply.outcome.result, data) &&
           data.WriteInt64(reply.due) && WriteObject(reply.object, data);
}

bool ReadReply(MessageParcel& data, AgentReply* reply)
{
    return data.ReadBool(reply->ok) && data.ReadString(reply->error) && data.ReadBool(reply->outcome.sent) &&
           data.ReadInt32(reply->outcome.status) && ReadValue(data, &reply->outcome.result) &&
           data.ReadInt64(reply->due) && ReadObject(data, &reply->object);
}

bool WriteEvent(const std::string& ev, const std::vector<TraceField>& fields, MessageParcel& data)
{
    bool ok = data.WriteInterfaceToken(kHubDescriptor) && data.WriteString(ev) &&
              data.WriteUint32(static_cast<uint32_t>(fields.size()));
    for (size_t i = 0; ok && i < fields.size(); ++i) {
        ok = data.WriteString(fields[i].name) && WriteValue(fields[i].value, data);
    }
    return ok;
}

bool ReadEvent(MessageParcel& data, std::string* ev, std::vector<TraceField>* fields)
{
    uint32_t count = 0;
    // A field takes at least its name's length and its value's kind.
    if (data.ReadInterfaceToken() != kHubDescriptor || !data.ReadString(*ev) || !ReadCount(data, 8, &count)) {
        return false;
    }
    fields->assign(count, TraceField{});
    for (TraceField& field : *fields) {
        if (!data.ReadString(field.name) || !ReadValue(data, &field.value)) {
            return false;
        }
    }
    return true;
}

}  // namespace Tarvo::Emu
