#include "parcel.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace Tarvo {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes BytesOf(const Parcel& parcel)
{
    return Bytes(parcel.GetData(), parcel.GetData() + parcel.GetDataSize());
}

Parcel ParcelOf(const Bytes& bytes)
{
    return Parcel(bytes.data(), bytes.size());
}

class Point : public Parcelable {
public:
    Point(int32_t x, int32_t y) : x(x), y(y) {}
    bool Marshalling(Parcel& parcel) const override { return parcel.WriteInt32(x) && parcel.WriteInt32(y); }
    static Point* Unmarshalling(Parcel& parcel)
    {
        int32_t x = 0;
        int32_t y = 0;
        return parcel.ReadInt32(x) && parcel.ReadInt32(y) ? new Point(x, y) : nullptr;
    }
    int32_t x;
    int32_t y;
};

class ParcelTest : public testing::Test {};

TEST_F(ParcelTest, ScalarsAreLittleEndianWords)
{
    Parcel parcel;
    ASSERT_TRUE(parcel.WriteInt32(-2));
    ASSERT_TRUE(parcel.WriteUint32(0x01020304));
    ASSERT_TRUE(parcel.WriteBool(true));
    ASSERT_TRUE(parcel.WriteInt64(0x0102030405060708));
    ASSERT_TRUE(parcel.WriteFloat(1.0f));
    EXPECT_EQ(BytesOf(parcel), (Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0x04, 0x03, 0x02, 0x01, 0x01, 0x00, 0x00, 0x00,
                                      0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0x00, 0x00, 0x80, 0x3F}));
}

TEST_F(ParcelTest, StringsCarryLengthTerminatorAndPadding)
{
    Parcel parcel;
    ASSERT_TRUE(parcel.WriteString("ab"));
    ASSERT_TRUE(parcel.WriteString(""));
    ASSERT_TRUE(parcel.WriteString("abcd"));
    EXPECT_EQ(BytesOf(parcel), (Bytes{0x02, 0, 0,    0, 'a', 'b', 0,   0,   0,   0,   0, 0, 0, 0,
                                      0,    0, 0x04, 0, 0,   0,   'a', 'b', 'c', 'd', 0, 0, 0, 0}));

    Parcel wide;
    ASSERT_TRUE(wide.WriteString16(u"ab"));
    ASSERT_TRUE(wide.WriteString16(u"\u20AC"));
    EXPECT_EQ(BytesOf(wide), (Bytes{0x02, 0, 0, 0, 'a', 0, 'b', 0, 0, 0, 0, 0, 0x01, 0, 0, 0, 0xAC, 0x20, 0, 0}));
}

TEST_F(ParcelTest, VectorsCarryCountThenElements)
{
    Parcel parcel;
    ASSERT_TRUE(parcel.WriteUInt32Vector({7, 0xFFFFFFFF}));
    ASSERT_TRUE(parcel.WriteInt32Vector({}));
    ASSERT_TRUE(parcel.WriteStringVector({"x"}));
    EXPECT_EQ(BytesOf(parcel), (Bytes{0x02, 0, 0,    0, 0x07, 0, 0,    0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0,
                                      0,    0, 0x01, 0, 0,    0, 0x01, 0, 0,    0,    'x',  0,    0, 0}));
}

TEST_F(ParcelTest, EveryFieldReadsBackAsWritten)
{
    Parcel parcel;
    Point point(3, -4);
    ASSERT_TRUE(parcel.WriteBool(false));
    ASSERT_TRUE(parcel.WriteUint64(std::numeric_limits<uint64_t>::max()));
    ASSERT_TRUE(parcel.WriteDouble(-0.5));
    ASSERT_TRUE(parcel.WriteString("hello"));
    ASSERT_TRUE(parcel.WriteString16(u"Tarvo.IZelManager"));
    ASSERT_TRUE(parcel.WriteInt32Vector({-1, 0, 1}));
    ASSERT_TRUE(parcel.WriteStringVector({"", "com.example"}));
    ASSERT_TRUE(parcel.WriteBuffer("xyz", 3));
    ASSERT_TRUE(parcel.WriteParcelable(&point));
    ASSERT_TRUE(parcel.WriteParcelable(nullptr));
    ASSERT_TRUE(parcel.WriteInt32(9));

    bool flag = true;
    uint64_t big = 0;
    double real = 0;
    std::vector<int32_t> ints;
    std::vector<std::string> strings;
    EXPECT_TRUE(parcel.ReadBool(flag));
    EXPECT_FALSE(flag);
    EXPECT_TRUE(parcel.ReadUint64(big));
    EXPECT_EQ(big, std::numeric_limits<uint64_t>::max());
    EXPECT_TRUE(parcel.ReadDouble(real));
    EXPECT_EQ(real, -0.5);
    EXPECT_EQ(parcel.ReadString(), "hello");
    EXPECT_EQ(parcel.ReadString16(), u"Tarvo.IZelManager");
    EXPECT_TRUE(parcel.ReadInt32Vector(&ints));
    EXPECT_EQ(ints, (std::vector<int32_t>{-1, 0, 1}));
    EXPECT_TRUE(parcel.ReadStringVector(&strings));
    EXPECT_EQ(strings, (std::vector<std::string>{"", "com.example"}));
    const uint8_t* buffer = parcel.ReadBuffer(3);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer), 3), "xyz");
    sptr<Point> copy = parcel.ReadParcelable<Point>();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->x, 3);
    EXPECT_EQ(copy->y, -4);
    EXPECT_EQ(parcel.ReadParcelable<Point>(), nullptr);
    EXPECT_EQ(parcel.ReadInt32(), 9);
    EXPECT_EQ(parcel.GetReadableBytes(), 0u);
}

TEST_F(ParcelTest, BoolAcceptsAnyNonZeroWord)
{
    Parcel parcel = ParcelOf({0x02, 0, 0, 0, 0, 0, 0, 0x80});
    EXPECT_TRUE(parcel.ReadBool());
    EXPECT_TRUE(parcel.ReadBool());
}

TEST_F(ParcelTest, ShortInputFailsAndKeepsTheReadPosition)
{
    Parcel parcel = ParcelOf({0x01, 0, 0, 0, 0x02, 0, 0});
    ASSERT_EQ(parcel.ReadInt32(), 1);
    int32_t word = 0;
    int64_t wide = 0;
    std::string text = "kept";
    EXPECT_FALSE(parcel.ReadInt32(word));
    EXPECT_FALSE(parcel.ReadInt64(wide));
    EXPECT_FALSE(parcel.ReadString(text));
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(parcel.ReadBuffer(4), nullptr);
    EXPECT_EQ(parcel.GetReadPosition(), 4u);
    // Value forms fall back to zero values.
    EXPECT_EQ(parcel.ReadUint32(), 0u);
    EXPECT_EQ(parcel.ReadInt64(), 0);
    EXPECT_FALSE(parcel.ReadBool());
    EXPECT_EQ(parcel.ReadString(), "");
    EXPECT_EQ(parcel.ReadString16(), u"");
    EXPECT_EQ(parcel.GetReadPosition(), 4u);
}

TEST_F(ParcelTest, ZeroBytesAreAlwaysThereToRead)
{
    Parcel empty;
    Parcel read = ParcelOf({0x01, 0, 0, 0});
    ASSERT_EQ(read.ReadInt32(), 1);
    for (Parcel* parcel : {&empty, &read}) {
        EXPECT_NE(parcel->ReadBuffer(0), nullptr);
        EXPECT_EQ(parcel->ReadBuffer(1), nullptr);
        EXPECT_EQ(parcel->GetReadPosition(), parcel->GetDataSize());
    }
}

TEST_F(ParcelTest, BadCountsAndMissingTerminatorsFailWithoutAllocating)
{
    // Counts far beyond the bytes left must fail before any element storage is reserved.
    Parcel huge = ParcelOf({0xFF, 0xFF, 0xFF, 0x7F, 0x01, 0, 0, 0});
    std::vector<uint32_t> words;
    std::vector<std::string> strings;
    std::string text;
    std::u16string wide;
    EXPECT_FALSE(huge.ReadUInt32Vector(&words));
    EXPECT_FALSE(huge.ReadStringVector(&strings));
    EXPECT_FALSE(huge.ReadString(text));
    EXPECT_FALSE(huge.ReadString16(wide));
    EXPECT_EQ(words.capacity(), 0u);
    EXPECT_EQ(huge.GetReadPosition(), 0u);

    Parcel negative = ParcelOf({0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0});
    EXPECT_FALSE(negative.ReadInt32Vector(nullptr));
    EXPECT_FALSE(negative.ReadString(text));
    EXPECT_EQ(negative.ReadInt32(), -1);

    // Length 2 but the byte after the text is not 0.
    Parcel unterminated = ParcelOf({0x02, 0, 0, 0, 'a', 'b', 'c', 0});
    EXPECT_FALSE(unterminated.ReadString(text));
    EXPECT_EQ(unterminated.GetReadPosition(), 0u);
    // The terminator would lie past the end.
    Parcel cut = ParcelOf({0x04, 0, 0, 0, 'a', 'b', 'c', 'd'});
    EXPECT_FALSE(cut.ReadString(text));
    Parcel wideUnterminated = ParcelOf({0x01, 0, 0, 0, 'a', 0, 'b', 0});
    EXPECT_FALSE(wideUnterminated.ReadString16(wide));
    EXPECT_TRUE(text.empty());
    EXPECT_TRUE(wide.empty());
}

TEST_F(ParcelTest, WritesBeyondTheCapacityFailAndLeaveTheParcelUnchanged)
{
    Parcel parcel;
    EXPECT_EQ(parcel.GetMaxCapacity(), Parcel::DEFAULT_CPACITY);
    ASSERT_TRUE(parcel.SetMaxCapacity(12));
    ASSERT_TRUE(parcel.WriteInt32(1));
    ASSERT_TRUE(parcel.WriteInt32(2));
    EXPECT_FALSE(parcel.WriteInt64(3));
    EXPECT_FALSE(parcel.WriteString("abcd"));
    EXPECT_FALSE(parcel.WriteUInt32Vector({1, 2}));
    EXPECT_FALSE(parcel.WriteStringVector({"a"}));
    EXPECT_FALSE(parcel.WriteBuffer("12345", 5));
    EXPECT_EQ(BytesOf(parcel), (Bytes{1, 0, 0, 0, 2, 0, 0, 0}));
    EXPECT_TRUE(parcel.WriteBool(true));
    EXPECT_FALSE(parcel.WriteBool(true));
    EXPECT_FALSE(parcel.SetMaxCapacity(8));

    Parcel small;
    ASSERT_TRUE(small.SetMaxCapacity(4));
    Bytes eight(8, 0);
    EXPECT_FALSE(small.ParseFrom(eight.data(), eight.size()));
    EXPECT_EQ(small.GetDataSize(), 0u);
}

TEST_F(ParcelTest, FailedParcelableWriteIsTakenBack)
{
    class Broken : public Parcelable {
    public:
        bool Marshalling(Parcel& parcel) const override { return parcel.WriteInt32(5) && false; }
    };
    Parcel parcel;
    ASSERT_TRUE(parcel.WriteInt32(1));
    Broken broken;
    EXPECT_FALSE(parcel.WriteParcelable(&broken));
    EXPECT_EQ(BytesOf(parcel), (Bytes{1, 0, 0, 0}));
}

TEST_F(ParcelTest, RewindMovesWithinTheData)
{
    Parcel parcel;
    ASSERT_TRUE(parcel.WriteInt32(1));
    ASSERT_TRUE(parcel.WriteInt32(2));
    EXPECT_EQ(parcel.ReadInt32(), 1);
    EXPECT_TRUE(parcel.RewindRead(0));
    EXPECT_EQ(parcel.ReadInt32(), 1);
    EXPECT_FALSE(parcel.RewindRead(9));
    EXPECT_TRUE(parcel.RewindWrite(4));
    EXPECT_EQ(parcel.GetDataSize(), 4u);
    EXPECT_EQ(parcel.GetReadableBytes(), 0u);
    EXPECT_FALSE(parcel.RewindWrite(8));
}

}  // namespace
}  // namespace Tarvo
