// Every read of MessageParcel, in an order the input chooses, over bytes the input gives. A read
// never goes past the data and leaves the read position alone when it fails; whatever a read
// returns reads back the same once it is written again.
//
// Input: byte 0 holds the number of steps (low 5 bits) and, in bit 7, whether the parcel carries
// one remote object; then one byte per step (low 5 bits the read, high 3 bits its argument); the
// rest is the parcel's bytes.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "fuzz_support.h"
#include "ipc_object_stub.h"
#include "message_parcel.h"
#include "virtual_process.h"

namespace Tarvo::Fuzz {
namespace {
using Value =
    std::variant<std::monostate, bool, int32_t, uint32_t, int64_t, uint64_t, float, double, std::string, std::u16string,
                 std::vector<int32_t>, std::vector<uint32_t>, std::vector<std::string>, std::vector<uint8_t>>;

struct Step {
    // True when the read succeeded; `value` then holds what it returned.
    std::function<bool(MessageParcel&, uint8_t arg, Value& value)> read;
    // Writes `value` so that the same read gives it back; null for reads with nothing to write.
    std::function<bool(MessageParcel&, const Value& value)> write;
};

class Pair : public Parcelable {
public:
    Pair(int32_t first, int32_t second) : first_(first), second_(second) {}
    bool Marshalling(Parcel& parcel) const override { return parcel.WriteInt32(first_) && parcel.WriteInt32(second_); }
    static Pair* Unmarshalling(Parcel& parcel)
    {
        int32_t first = 0;
        int32_t second = 0;
        return parcel.ReadInt32(first) && parcel.ReadInt32(second) ? new Pair(first, second) : nullptr;
    }
    std::vector<int32_t> Fields() const { return {first_, second_}; }

private:
    int32_t first_;
    int32_t second_;
};

template <typename T, typename Write>
Step Field(bool (Parcel::*read)(T&), Write write)
{
    return {[read](MessageParcel& parcel, uint8_t, Value& value) {
                T field{};
                bool ok = (parcel.*read)(field);
                value = field;
                return ok;
            },
            [write](MessageParcel& parcel, const Value& value) { return (parcel.*write)(std::get<T>(value)); }};
}

template <typename T, typename Write>
Step VectorField(bool (Parcel::*read)(std::vector<T>*), Write write)
{
    return {[read](MessageParcel& parcel, uint8_t, Value& value) {
                std::vector<T> field;
                bool ok = (parcel.*read)(&field);
                value = field;
                return ok;
            },
            [write](MessageParcel& parcel, const Value& value) {
                return (parcel.*write)(std::get<std::vector<T>>(value));
            }};
}

// The value forms say nothing about failure; a read that moved the position succeeded.
template <typename T, typename Read, typename Write>
Step ValueForm(Read read, Write write)
{
    return {[read](MessageParcel& parcel, uint8_t, Value& value) {
                size_t start = parcel.GetReadPosition();
                value = static_cast<T>((parcel.*read)());
                return parcel.GetReadPosition() != start;
            },
            [write](MessageParcel& parcel, const Value& value) { return (parcel.*write)(std::get<T>(value)); }};
}

Step Buffer()
{
    return {[](MessageParcel& parcel, uint8_t arg, Value& value) {
                size_t size = arg * 5u;
                const uint8_t* bytes = parcel.ReadBuffer(size);
                if (bytes == nullptr) {
                    return false;
                }
                FUZZ_REQUIRE(size == 0 ||
                             (bytes >= parcel.GetData() && bytes + size <= parcel.GetData() + parcel.GetDataSize()));
                value = std::vector<uint8_t>(bytes, bytes + size);
                return true;
            },
            [](MessageParcel& parcel, const Value& value) {
                const auto& bytes = std::get<std::vector<uint8_t>>(value);
                return parcel.WriteBuffer(bytes.data(), bytes.size());
            }};
}

Step Parcelable()
{
    // "None" is a successful read of no object: it moves the position, a failure does not.
    return {[](MessageParcel& parcel, uint8_t, Value& value) {
                size_t start = parcel.GetReadPosition();
                std::unique_ptr<Pair> pair(parcel.ReadParcelable<Pair>());
                value = pair == nullptr ? std::vector<int32_t>{} : pair->Fields();
                return pair != nullptr || parcel.GetReadPosition() != start;
            },
            [](MessageParcel& parcel, const Value& value) {
                const auto& fields = std::get<std::vector<int32_t>>(value);
                if (fields.empty()) {
                    return parcel.WriteParcelable(nullptr);
                }
                Pair pair(fields[0], fields[1]);
                return parcel.WriteParcelable(&pair);
            }};
}

std::vector<Step> MakeSteps()
{
    using P = Parcel;
    using MP = MessageParcel;
    return {
        Field(&P::ReadBool, &P::WriteBool),
        Field(&P::ReadInt32, &P::WriteInt32),
        Field(&P::ReadUint32, &P::WriteUint32),
        Field(&P::ReadInt64, &P::WriteInt64),
        Field(&P::ReadUint64, &P::WriteUint64),
        Field(&P::ReadFloat, &P::WriteFloat),
        Field(&P::ReadDouble, &P::WriteDouble),
        Field(&P::ReadString, &P::WriteString),
        Field(&P::ReadString16, &P::WriteString16),
        VectorField(&P::ReadInt32Vector, &P::WriteInt32Vector),
        VectorField(&P::ReadUInt32Vector, &P::WriteUInt32Vector),
        VectorField(&P::ReadStringVector, &P::WriteStringVector),
        Buffer(),
        Parcelable(),
        ValueForm<bool>(static_cast<bool (P::*)()>(&P::ReadBool), &P::WriteBool),
        ValueForm<int32_t>(static_cast<int32_t (P::*)()>(&P::ReadInt32), &P::WriteInt32),
        ValueForm<uint32_t>(static_cast<uint32_t (P::*)()>(&P::ReadUint32), &P::WriteUint32),
        ValueForm<int64_t>(static_cast<int64_t (P::*)()>(&P::ReadInt64), &P::WriteInt64),
        ValueForm<uint64_t>(static_cast<uint64_t (P::*)()>(&P::ReadUint64), &P::WriteUint64),
        ValueForm<std::string>(static_cast<std::string (P::*)()>(&P::ReadString), &P::WriteString),
        ValueForm<std::u16string>(static_cast<std::u16string (P::*)()>(&P::ReadString16), &P::WriteString16),
        ValueForm<std::u16string>(&MP::ReadInterfaceToken, &MP::WriteInterfaceToken),
        {[](MessageParcel& parcel, uint8_t, Value&) { return parcel.ReadRemoteObject() != nullptr; }, nullptr},
        {[](MessageParcel& parcel, uint8_t arg, Value&) { return parcel.RewindRead(arg * 4u); }, nullptr},
    };
}

// Floating-point values compare by their bits: a NaN must come back as the same NaN.
bool Same(const Value& a, const Value& b)
{
    if (a.index() != b.index()) {
        return false;
    }
    if (const float* x = std::get_if<float>(&a)) {
        return std::memcmp(x, &std::get<float>(b), sizeof(float)) == 0;
    }
    if (const double* x = std::get_if<double>(&a)) {
        return std::memcmp(x, &std::get<double>(b), sizeof(double)) == 0;
    }
    return a == b;
}

struct Done {
    size_t step;
    uint8_t arg;
    Value value;
};

// An object of another process, so that reading it gives this thread a proxy, as across processes.
sptr<IRemoteObject> ForeignObject()
{
    static std::shared_ptr<VirtualProcess> owner = VirtualProcess::Create({77, 77, 77, 77, "fuzz_owner"});
    static sptr<IRemoteObject> object = [] {
        ScopedProcess scope(owner);
        return sptr<IRemoteObject>(new IPCObjectStub(u"fuzz.Object"));
    }();
    return object;
}

MessageParcel MakeParcel(bool withObject, const uint8_t* bytes, size_t size)
{
    if (withObject) {
        return RequestOf(nullptr, bytes, size, ForeignObject());
    }
    MessageParcel parcel;
    parcel.ParseFrom(bytes, size);  // the bytes exactly, unpadded
    return parcel;
}

std::vector<Done> RunSteps(const std::vector<Step>& steps, const uint8_t* plan, size_t count, MessageParcel& parcel)
{
    std::vector<Done> done;
    for (size_t i = 0; i < count; ++i) {
        size_t which = (plan[i] & 0x1F) % steps.size();
        uint8_t arg = plan[i] >> 5;
        size_t before = parcel.GetReadPosition();
        Value value;
        bool ok = steps[which].read(parcel, arg, value);
        FUZZ_REQUIRE(parcel.GetReadPosition() <= parcel.GetDataSize());
        FUZZ_REQUIRE(ok || parcel.GetReadPosition() == before);
        if (ok && steps[which].write) {
            done.push_back({which, arg, std::move(value)});
        }
    }
    return done;
}

void ReadBack(const std::vector<Step>& steps, const std::vector<Done>& done)
{
    MessageParcel echo;
    for (const Done& d : done) {
        FUZZ_REQUIRE(steps[d.step].write(echo, d.value));
    }
    for (const Done& d : done) {
        Value again;
        FUZZ_REQUIRE(steps[d.step].read(echo, d.arg, again));
        FUZZ_REQUIRE(Same(again, d.value));
    }
    FUZZ_REQUIRE(echo.GetReadableBytes() == 0);
}
}  // namespace
}  // namespace Tarvo::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Tarvo::Fuzz;
    static const std::vector<Step> steps = MakeSteps();
    if (size == 0) {
        return 0;
    }
    size_t count = std::min<size_t>(data[0] & 0x1F, size - 1);
    bool withObject = (data[0] & 0x80) != 0;
    const uint8_t* plan = data + 1;
    Tarvo::MessageParcel parcel = MakeParcel(withObject, plan + count, size - 1 - count);
    ReadBack(steps, RunSteps(steps, plan, count, parcel));
    return 0;
}
