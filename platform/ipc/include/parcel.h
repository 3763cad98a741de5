#ifndef TARVO_IPC_PARCEL_H
#define TARVO_IPC_PARCEL_H

// A flat, bounded byte buffer for requests and replies.
//
// Wire format (stable: peers and recorded traces depend on it). Every field starts at a multiple
// of 4 bytes; a field whose size is not a multiple of 4 is followed by zero bytes up to the next one.
//  - int32, uint32, float: 4 bytes, little-endian. bool: an int32, 1 or 0 (any non-zero reads as true).
//  - int64, uint64, double: 8 bytes, little-endian.
//  - string: int32 length in bytes, the bytes, one 0 byte, padding.       "ab" -> 02 00 00 00 61 62 00 00
//  - string16: int32 length in UTF-16 code units, the code units (2 bytes each, little-endian), one 0
//    code unit, padding.                                                  u"ab" -> 02 00 00 00 61 00 62 00 00 00 00 00
//  - vectors (int32, uint32, string): int32 element count, then the elements in the formats above.
//  - buffer: the raw bytes, padding. The reader must know the size.
//  - parcelable: int32 1 then the object's own fields, or int32 0 for none.
//
// Contract:
//  - Writes append at the end. A write that would take the parcel past GetMaxCapacity() fails and
//    leaves it unchanged (also for composite fields such as strings and vectors).
//  - Reads consume from the read position. A read that fails (too few bytes left, a negative or
//    oversized count, a string without its terminating 0) returns false / an empty value and leaves
//    the read position where it was. Reads never go past the end and never allocate for a count
//    before checking that the bytes for it are present.
//  - Not thread-safe: one parcel belongs to one thread at a time.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "refbase.h"

namespace Tarvo {

class Parcel;

// An object that can write itself into a parcel. Readers provide a static
// `T* Unmarshalling(Parcel&)` (null on failure) for Parcel::ReadParcelable<T>().
class Parcelable : public virtual RefBase {
public:
    ~Parcelable() override = default;
    // Appends the object's fields; false if it cannot be written. The default writes nothing.
    virtual bool Marshalling(Parcel& parcel) const;
};

class Parcel {
public:
    static constexpr size_t DEFAULT_CPACITY = 204800;

    Parcel() = default;
    // A parcel holding a copy of the bytes, read position at the start; bytes beyond the default
    // capacity are not taken (the parcel is then empty).
    Parcel(const uint8_t* data, size_t size);
    Parcel(const Parcel&) = default;
    Parcel& operator=(const Parcel&) = default;
    Parcel(Parcel&&) = default;
    Parcel& operator=(Parcel&&) = default;
    virtual ~Parcel() = default;

    // Replaces the contents with a copy of the bytes, read position at the start. False (parcel
    // unchanged) if the bytes exceed the capacity or data is null with a non-zero size.
    virtual bool ParseFrom(const uint8_t* data, size_t size);

    const uint8_t* GetData() const { return data_.data(); }
    size_t GetDataSize() const { return data_.size(); }
    size_t GetWritePosition() const { return data_.size(); }
    size_t GetReadPosition() const { return readPos_; }
    size_t GetReadableBytes() const { return data_.size() - readPos_; }
    size_t GetMaxCapacity() const { return maxCapacity_; }
    // False (capacity unchanged) if the parcel already holds more than the new capacity.
    bool SetMaxCapacity(size_t maxCapacity);

    // Moves the read position; false if it lies beyond the data.
    bool RewindRead(size_t position);
    // Drops everything written from the position on; false if it lies beyond the data.
    bool RewindWrite(size_t position);
    // Empties the parcel.
    virtual void FlushBuffer();

    bool WriteBool(bool value);
    bool WriteInt32(int32_t value);
    bool WriteUint32(uint32_t value);
    bool WriteInt64(int64_t value);
    bool WriteUint64(uint64_t value);
    bool WriteFloat(float value);
    bool WriteDouble(double value);
    bool WriteString(const std::string& value);
    bool WriteString16(const std::u16string& value);
    bool WriteInt32Vector(const std::vector<int32_t>& value);
    bool WriteUInt32Vector(const std::vector<uint32_t>& value);
    bool WriteStringVector(const std::vector<std::string>& value);
    bool WriteBuffer(const void* data, size_t size);
    // A null object is written as "none"; on failure everything this call wrote is taken back.
    bool WriteParcelable(const Parcelable* object);

    bool ReadBool(bool& value);
    bool ReadInt32(int32_t& value);
    bool ReadUint32(uint32_t& value);
    bool ReadInt64(int64_t& value);
    bool ReadUint64(uint64_t& value);
    bool ReadFloat(float& value);
    bool ReadDouble(double& value);
    bool ReadString(std::string& value);
    bool ReadString16(std::u16string& value);
    bool ReadInt32Vector(std::vector<int32_t>* value);
    bool ReadUInt32Vector(std::vector<uint32_t>* value);
    bool ReadStringVector(std::vector<std::string>* value);
    // The next `size` bytes (and their padding), valid until the parcel is next changed; null if
    // they are not all there.
    const uint8_t* ReadBuffer(size_t size);

    // Value forms: 0, false or "" when the read fails.
    bool ReadBool();
    int32_t ReadInt32();
    uint32_t ReadUint32();
    int64_t ReadInt64();
    uint64_t ReadUint64();
    std::string ReadString();
    std::u16string ReadString16();

    // A new T (owned by the caller) or null for "none" and on failure.
    template <typename T>
    T* ReadParcelable();

private:
    bool HasRoomFor(size_t size) const;
    void ReserveFirst();
    // Appends without a capacity check; callers check first so that a field goes in whole or not at all.
    void AppendUint32(uint32_t value);
    void AppendUint64(uint64_t value);
    void AppendPadded(const void* bytes, size_t size);
    // The next field of `size` bytes (padding skipped too); null if not all there.
    const uint8_t* Consume(size_t size);
    // A count read from the parcel that is non-negative and needs at most GetReadableBytes().
    bool ReadCount(size_t elementSize, size_t& count);

    std::vector<uint8_t> data_;
    size_t readPos_ = 0;
    size_t maxCapacity_ = DEFAULT_CPACITY;
};

template <typename T>
T* Parcel::ReadParcelable()
{
    size_t start = readPos_;
    int32_t present = 0;
    if (!ReadInt32(present) || present == 0) {
        return nullptr;
    }
    T* object = T::Unmarshalling(*this);
    if (object == nullptr) {
        readPos_ = start;
    }
    return object;
}

}  // namespace Tarvo

#endif  // TARVO_IPC_PARCEL_H
