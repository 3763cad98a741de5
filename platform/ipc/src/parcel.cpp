#include "parcel.h"

#include <cstring>
#include <limits>

namespace Tarvo {
namespace {
constexpr size_t kAlignment = 4;
constexpr size_t kWordSize = 4;
constexpr size_t kFirstCapacity = 256;
// The smallest encoded string: its length and the padded terminator.
constexpr size_t kMinStringSize = 8;
constexpr size_t kMaxCount = static_cast<size_t>(std::numeric_limits<int32_t>::max());

constexpr size_t PadSize(size_t size)
{
    return (size + kAlignment - 1) & ~(kAlignment - 1);
}

uint32_t LoadLe32(const uint8_t* bytes)
{
    return static_cast<uint32_t>(bytes[0]) | (static_cast<uint32_t>(bytes[1]) << 8) |
           (static_cast<uint32_t>(bytes[2]) << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
}

uint64_t LoadLe64(const uint8_t* bytes)
{
    return static_cast<uint64_t>(LoadLe32(bytes)) | (static_cast<uint64_t>(LoadLe32(bytes + 4)) << 32);
}
}  // namespace

bool Parcelable::Marshalling(Parcel&) const
{
    return false;
}

Parcel::Parcel(const uint8_t* data, size_t size)
{
    ParseFrom(data, size);
}

bool Parcel::ParseFrom(const uint8_t* data, size_t size)
{
    if (size > maxCapacity_ || (data == nullptr && size != 0)) {
        return false;
    }
    data_.assign(data, data + size);
    readPos_ = 0;
    return true;
}

bool Parcel::SetMaxCapacity(size_t maxCapacity)
{
    if (maxCapacity < data_.size()) {
        return false;
    }
    maxCapacity_ = maxCapacity;
    return true;
}

bool Parcel::RewindRead(size_t position)
{
    if (position > data_.size()) {
        return false;
    }
    readPos_ = position;
    return true;
}

bool Parcel::RewindWrite(size_t position)
{
    if (position > data_.size()) {
        return false;
    }
    data_.resize(position);
    if (readPos_ > position) {
        readPos_ = position;
    }
    return true;
}

void Parcel::FlushBuffer()
{
    data_.clear();
    readPos_ = 0;
}

bool Parcel::HasRoomFor(size_t size) const
{
    return size <= maxCapacity_ && data_.size() <= maxCapacity_ - size;
}

void Parcel::ReserveFirst()
{
    // Most parcels are a few dozen bytes: one allocation instead of a doubling series from 4.
    if (data_.capacity() == 0) {
        data_.reserve(kFirstCapacity);
    }
}

void Parcel::AppendUint32(uint32_t value)
{
    ReserveFirst();
    const uint8_t bytes[kWordSize] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8),
                                      static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 24)};
    data_.insert(data_.end(), bytes, bytes + kWordSize);
}

void Parcel::AppendUint64(uint64_t value)
{
    AppendUint32(static_cast<uint32_t>(value));
    AppendUint32(static_cast<uint32_t>(value >> 32));
}

void Parcel::AppendPadded(const void* bytes, size_t size)
{
    ReserveFirst();
    const auto* begin = static_cast<const uint8_t*>(bytes);
    if (size != 0) {
        data_.insert(data_.end(), begin, begin + size);
    }
    data_.resize(data_.size() + PadSize(size) - size, 0);
}

const uint8_t* Parcel::Consume(size_t size)
{
    size_t padded = PadSize(size);
    if (padded < size || padded > GetReadableBytes()) {
        return nullptr;
    }
    // An empty parcel has no storage to point into, yet zero bytes are always there.
    static constexpr uint8_t kNoBytes = 0;
    const uint8_t* field = data_.empty() ? &kNoBytes : data_.data() + readPos_;
    readPos_ += padded;
    return field;
}

bool Parcel::ReadCount(size_t elementSize, size_t& count)
{
    int32_t raw = 0;
    if (!ReadInt32(raw)) {
        return false;
    }
    // Dividing keeps a huge count from overflowing the check.
    if (raw < 0 || static_cast<size_t>(raw) > GetReadableBytes() / elementSize) {
        readPos_ -= kWordSize;
        return false;
    }
    count = static_cast<size_t>(raw);
    return true;
}

bool Parcel::WriteBool(bool value)
{
    return WriteInt32(value ? 1 : 0);
}

bool Parcel::WriteInt32(int32_t value)
{
    return WriteUint32(static_cast<uint32_t>(value));
}

bool Parcel::WriteUint32(uint32_t value)
{
    if (!HasRoomFor(kWordSize)) {
        return false;
    }
    AppendUint32(value);
    return true;
}

bool Parcel::WriteInt64(int64_t value)
{
    return WriteUint64(static_cast<uint64_t>(value));
}

bool Parcel::WriteUint64(uint64_t value)
{
    if (!HasRoomFor(2 * kWordSize)) {
        return false;
    }
    AppendUint64(value);
    return true;
}

bool Parcel::WriteFloat(float value)
{
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return WriteUint32(bits);
}

bool Parcel::WriteDouble(double value)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return WriteUint64(bits);
}

bool Parcel::WriteString(const std::string& value)
{
    if (value.size() > kMaxCount - 1 || !HasRoomFor(kWordSize + PadSize(value.size() + 1))) {
        return false;
    }
    AppendUint32(static_cast<uint32_t>(value.size()));
    // c_str() carries the terminating 0.
    AppendPadded(value.c_str(), value.size() + 1);
    return true;
}

bool Parcel::WriteString16(const std::u16string& value)
{
    if (value.size() > kMaxCount / 2 - 1) {
        return false;
    }
    size_t units = value.size() + 1;
    if (!HasRoomFor(kWordSize + PadSize(units * 2))) {
        return false;
    }
    AppendUint32(static_cast<uint32_t>(value.size()));
    size_t start = data_.size();
    data_.resize(start + PadSize(units * 2), 0);
    for (size_t i = 0; i < value.size(); ++i) {
        data_[start + 2 * i] = static_cast<uint8_t>(value[i]);
        data_[start + 2 * i + 1] = static_cast<uint8_t>(value[i] >> 8);
    }
    return true;
}

bool Parcel::WriteInt32Vector(const std::vector<int32_t>& value)
{
    if (value.size() > kMaxCount || !HasRoomFor(kWordSize * (value.size() + 1))) {
        return false;
    }
    AppendUint32(static_cast<uint32_t>(value.size()));
    for (int32_t element : value) {
        AppendUint32(static_cast<uint32_t>(element));
    }
    return true;
}

bool Parcel::WriteUInt32Vector(const std::vector<uint32_t>& value)
{
    if (value.size() > kMaxCount || !HasRoomFor(kWordSize * (value.size() + 1))) {
        return false;
    }
    AppendUint32(static_cast<uint32_t>(value.size()));
    for (uint32_t element : value) {
        AppendUint32(element);
    }
    return true;
}

bool Parcel::WriteStringVector(const std::vector<std::string>& value)
{
    size_t start = data_.size();
    if (value.size() > kMaxCount || !WriteUint32(static_cast<uint32_t>(value.size()))) {
        return false;
    }
    for (const auto& element : value) {
        if (!WriteString(element)) {
            RewindWrite(start);
            return false;
        }
    }
    return true;
}

bool Parcel::WriteBuffer(const void* data, size_t size)
{
    if ((data == nullptr && size != 0) || PadSize(size) < size || !HasRoomFor(PadSize(size))) {
        return false;
    }
    AppendPadded(data, size);
    return true;
}

bool Parcel::WriteParcelable(const Parcelable* object)
{
    if (object == nullptr) {
        return WriteInt32(0);
    }
    size_t start = data_.size();
    if (!WriteInt32(1) || !object->Marshalling(*this)) {
        RewindWrite(start);
        return false;
    }
    return true;
}

bool Parcel::ReadBool(bool& value)
{
    int32_t raw = 0;
    if (!ReadInt32(raw)) {
        return false;
    }
    value = raw != 0;
    return true;
}

bool Parcel::ReadInt32(int32_t& value)
{
    uint32_t raw = 0;
    if (!ReadUint32(raw)) {
        return false;
    }
    value = static_cast<int32_t>(raw);
    return true;
}

bool Parcel::ReadUint32(uint32_t& value)
{
    const uint8_t* field = Consume(kWordSize);
    if (field == nullptr) {
        return false;
    }
    value = LoadLe32(field);
    return true;
}

bool Parcel::ReadInt64(int64_t& value)
{
    uint64_t raw = 0;
    if (!ReadUint64(raw)) {
        return false;
    }
    value = static_cast<int64_t>(raw);
    return true;
}

bool Parcel::ReadUint64(uint64_t& value)
{
    const uint8_t* field = Consume(2 * kWordSize);
    if (field == nullptr) {
        return false;
    }
    value = LoadLe64(field);
    return true;
}

bool Parcel::ReadFloat(float& value)
{
    uint32_t bits = 0;
    if (!ReadUint32(bits)) {
        return false;
    }
    std::memcpy(&value, &bits, sizeof(value));
    return true;
}

bool Parcel::ReadDouble(double& value)
{
    uint64_t bits = 0;
    if (!ReadUint64(bits)) {
        return false;
    }
    std::memcpy(&value, &bits, sizeof(value));
    return true;
}

bool Parcel::ReadString(std::string& value)
{
    size_t start = readPos_;
    size_t length = 0;
    // The count check covers the bytes; the terminator is checked by Consume.
    if (!ReadCount(1, length)) {
        return false;
    }
    const uint8_t* field = Consume(length + 1);
    if (field == nullptr || field[length] != 0) {
        readPos_ = start;
        return false;
    }
    value.assign(reinterpret_cast<const char*>(field), length);
    return true;
}

bool Parcel::ReadString16(std::u16string& value)
{
    size_t start = readPos_;
    size_t units = 0;
    if (!ReadCount(2, units)) {
        return false;
    }
    const uint8_t* field = Consume((units + 1) * 2);
    if (field == nullptr || field[units * 2] != 0 || field[units * 2 + 1] != 0) {
        readPos_ = start;
        return false;
    }
    std::u16string result(units, u'\0');
    for (size_t i = 0; i < units; ++i) {
        result[i] = static_cast<char16_t>(field[2 * i] | (field[2 * i + 1] << 8));
    }
    value = std::move(result);
    return true;
}

bool Parcel::ReadInt32Vector(std::vector<int32_t>* value)
{
    size_t count = 0;
    if (value == nullptr || !ReadCount(kWordSize, count)) {
        return false;
    }
    value->resize(count);
    for (size_t i = 0; i < count; ++i) {
        (*value)[i] = static_cast<int32_t>(LoadLe32(Consume(kWordSize)));
    }
    return true;
}

bool Parcel::ReadUInt32Vector(std::vector<uint32_t>* value)
{
    size_t count = 0;
    if (value == nullptr || !ReadCount(kWordSize, count)) {
        return false;
    }
    value->resize(count);
    for (size_t i = 0; i < count; ++i) {
        (*value)[i] = LoadLe32(Consume(kWordSize));
    }
    return true;
}

bool Parcel::ReadStringVector(std::vector<std::string>* value)
{
    size_t start = readPos_;
    size_t count = 0;
    if (value == nullptr || !ReadCount(kMinStringSize, count)) {
        return false;
    }
    std::vector<std::string> result(count);
    for (auto& element : result) {
        if (!ReadString(element)) {
            readPos_ = start;
            return false;
        }
    }
    *value = std::move(result);
    return true;
}

const uint8_t* Parcel::ReadBuffer(size_t size)
{
    return Consume(size);
}

bool Parcel::ReadBool()
{
    bool value = false;
    return ReadBool(value) && value;
}

int32_t Parcel::ReadInt32()
{
    int32_t value = 0;
    return ReadInt32(value) ? value : 0;
}

uint32_t Parcel::ReadUint32()
{
    uint32_t value = 0;
    return ReadUint32(value) ? value : 0;
}

int64_t Parcel::ReadInt64()
{
    int64_t value = 0;
    return ReadInt64(value) ? value : 0;
}

uint64_t Parcel::ReadUint64()
{
    uint64_t value = 0;
    return ReadUint64(value) ? value : 0;
}

std::string Parcel::ReadString()
{
    std::string value;
    return ReadString(value) ? value : std::string();
}

std::u16string Parcel::ReadString16()
{
    std::u16string value;
    return ReadString16(value) ? value : std::u16string();
}

}  // namespace Tarvo
