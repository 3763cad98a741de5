#include "wire_frame.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Tarvo::WireFormat {
namespace {
// Writes at the end of `out`, which has room (Encode sizes it first).
template <typename T>
void Put(std::vector<uint8_t>& out, T value)
{
    const size_t at = out.size();
    out.resize(at + sizeof(T));
    for (size_t i = 0; i < sizeof(T); ++i) {
        out[at + i] = static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i));
    }
}

template <typename T>
T Get(const uint8_t* in)
{
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) {
        value |= static_cast<uint64_t>(in[i]) << (8 * i);
    }
    return static_cast<T>(value);
}

struct HeaderFields {
    uint32_t magic;
    uint16_t type;
    uint32_t count;
    uint32_t dataSize;
    uint32_t payloadSize;
};

HeaderFields ReadFields(const uint8_t* header)
{
    return {Get<uint32_t>(header), Get<uint16_t>(header + 4), Get<uint32_t>(header + 12), Get<uint32_t>(header + 48),
            Get<uint32_t>(header + 52)};
}

// Offsets of the header: magic 0, type 4, flags 6, code 8, count 12, id 16, tag 24, target 32,
// turn 40, data size 48, payload size 52.
void PutHeader(std::vector<uint8_t>& out, const Frame& frame)
{
    Put<uint32_t>(out, kMagic);
    Put<uint16_t>(out, frame.type);
    Put<uint16_t>(out, frame.flags);
    Put<uint32_t>(out, frame.code);
    Put<uint32_t>(out, static_cast<uint32_t>(frame.objects.size()));
    Put<uint64_t>(out, frame.id);
    Put<uint64_t>(out, frame.tag);
    Put<uint64_t>(out, frame.target);
    Put<uint64_t>(out, frame.turn);
    Put<uint32_t>(out, static_cast<uint32_t>(frame.data.size()));
    Put<uint32_t>(out, static_cast<uint32_t>(frame.data.size() + kEntrySize * frame.objects.size()));
}

void PutEntry(std::vector<uint8_t>& out, const ObjectEntry& entry)
{
    Put<int32_t>(out, entry.owner);
    Put<uint32_t>(out, static_cast<uint32_t>(entry.descriptor.size()));
    Put<uint64_t>(out, entry.cookie);
    for (size_t i = 0; i < kMaxDescriptor; ++i) {
        Put<uint16_t>(out, i < entry.descriptor.size() ? entry.descriptor[i] : 0);
    }
}
}  // namespace

std::vector<uint8_t> Encode(const Frame& frame)
{
    uint64_t total = kHeaderSize + frame.data.size() + uint64_t{kEntrySize} * frame.objects.size();
    if (total > kMaxFrame) {
        return {};
    }
    for (const ObjectEntry& entry : frame.objects) {
        if (entry.descriptor.size() > kMaxDescriptor) {
            return {};
        }
    }
    std::vector<uint8_t> out;
    out.reserve(total);
    PutHeader(out, frame);
    out.insert(out.end(), frame.data.begin(), frame.data.end());
    for (const ObjectEntry& entry : frame.objects) {
        PutEntry(out, entry);
    }
    return out;
}

FrameReader::Status FrameReader::Break(std::string reason)
{
    error_ = std::move(reason);
    return Status::BROKEN;
}

bool FrameReader::CheckHeader()
{
    HeaderFields fields = ReadFields(header_);
    if (fields.magic != kMagic) {
        error_ = "bad magic";
        return false;
    }
    if (fields.type < HELLO || fields.type > CONTEXT_LOOKUP) {
        error_ = "unknown frame type " + std::to_string(fields.type);
        return false;
    }
    // In 64 bits: neither field alone may wrap the sum.
    uint64_t payload = uint64_t{fields.dataSize} + uint64_t{kEntrySize} * fields.count;
    if (kHeaderSize + uint64_t{fields.payloadSize} > kMaxFrame || kHeaderSize + payload > kMaxFrame) {
        error_ = "frame over the size limit";
        return false;
    }
    if (payload != fields.payloadSize) {
        error_ = "sizes inconsistent with the payload";
        return false;
    }
    return true;
}

FrameReader::Status FrameReader::Feed(const uint8_t*& input, size_t& size, Frame& frame)
{
    if (!error_.empty()) {
        return Status::BROKEN;
    }
    if (!inPayload_) {
        size_t take = std::min(size, kHeaderSize - filled_);
        std::memcpy(header_ + filled_, input, take);
        filled_ += take;
        input += take;
        size -= take;
        if (filled_ < kHeaderSize) {
            return Status::NEED_MORE;
        }
        if (!CheckHeader()) {
            return Status::BROKEN;
        }
        HeaderFields fields = ReadFields(header_);
        payload_.assign(fields.payloadSize, 0);
        payloadFilled_ = 0;
        inPayload_ = true;
    }
    size_t take = std::min(size, payload_.size() - payloadFilled_);
    if (take > 0) {
        std::memcpy(payload_.data() + payloadFilled_, input, take);
    }
    payloadFilled_ += take;
    input += take;
    size -= take;
    if (payloadFilled_ < payload_.size()) {
        return Status::NEED_MORE;
    }
    return DecodePayload(frame);
}

FrameReader::Status FrameReader::DecodePayload(Frame& frame)
{
    HeaderFields fields = ReadFields(header_);
    frame.type = fields.type;
    frame.flags = Get<uint16_t>(header_ + 6);
    frame.code = Get<uint32_t>(header_ + 8);
    frame.id = Get<uint64_t>(header_ + 16);
    frame.tag = Get<uint64_t>(header_ + 24);
    frame.target = Get<uint64_t>(header_ + 32);
    frame.turn = Get<uint64_t>(header_ + 40);
    frame.objects.clear();
    filled_ = 0;
    inPayload_ = false;
    if (fields.count == 0) {
        // The payload is the data: handed over, not copied.
        frame.data = std::exchange(payload_, {});
        return Status::FRAME;
    }
    frame.data.assign(payload_.begin(), payload_.begin() + fields.dataSize);
    frame.objects.reserve(fields.count);
    for (const uint8_t* entry = payload_.data() + fields.dataSize; entry < payload_.data() + payload_.size();
         entry += kEntrySize) {
        uint32_t length = Get<uint32_t>(entry + 4);
        if (length > kMaxDescriptor) {
            return Break("descriptor of " + std::to_string(length) + " units over the limit");
        }
        ObjectEntry object{Get<int32_t>(entry), Get<uint64_t>(entry + 8), {}};
        for (uint32_t i = 0; i < length; ++i) {
            object.descriptor.push_back(static_cast<char16_t>(Get<uint16_t>(entry + 16 + 2 * i)));
        }
        frame.objects.push_back(std::move(object));
    }
    payload_ = {};
    return Status::FRAME;
}

}  // namespace Tarvo::WireFormat
