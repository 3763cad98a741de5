#include "raw_parcel.h"

namespace Tarvo::Emu {
namespace {
bool WriteField(const RawField& field, MessageParcel& data)
{
    const uint32_t word = field.words.empty() ? 0 : field.words.front();
    switch (field.kind) {
        case RawField::Kind::STRING:
            return data.WriteString(field.text);
        case RawField::Kind::INT32:
            return data.WriteInt32(static_cast<int32_t>(word));
        case RawField::Kind::UINT32:
            return data.WriteUint32(word);
        case RawField::Kind::BOOL:
            return data.WriteBool(word != 0);
        case RawField::Kind::INT32_VECTOR:
            return data.WriteInt32Vector(std::vector<int32_t>(field.words.begin(), field.words.end()));
        case RawField::Kind::UINT32_VECTOR:
            return data.WriteUInt32Vector(field.words);
        case RawField::Kind::BYTES:
            return data.WriteBuffer(field.text.data(), field.text.size());
    }
    return false;
}
}  // namespace

bool WriteRawRequest(const RawRequest& request, const std::u16string& defaultToken, MessageParcel& data)
{
    if (request.writeToken && !data.WriteInterfaceToken(request.token.value_or(defaultToken))) {
        return false;
    }
    for (const RawField& field : request.fields) {
        if (!WriteField(field, data)) {
            return false;
        }
    }
    return true;
}

}  // namespace Tarvo::Emu
