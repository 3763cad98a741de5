#include "wire_frame.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace Tarvo::WireFormat {
namespace {

std::string Hex(const std::vector<uint8_t>& bytes)
{
    std::string out;
    char digits[3];
    for (uint8_t byte : bytes) {
        std::snprintf(digits, sizeof(digits), "%02x", byte);
        out += digits;
    }
    return out;
}

std::string Zeros(size_t bytes)
{
    return std::string(2 * bytes, '0');
}

Frame GoldenRequest()
{
    Frame frame;
    frame.type = REQUEST;
    frame.code = 7;
    frame.id = 0x11;
    frame.tag = 0x22;
    frame.target = 0x33;
    frame.turn = 0x44;
    frame.data = {0x2a, 0, 0, 0};
    frame.objects.push_back({1234, 5, u"a.B"});
    return frame;
}

Frame GoldenReply()
{
    Frame frame;
    frame.type = REPLY;
    frame.code = 0;
    frame.id = 0x11;
    frame.data = {1, 0, 0, 0, 2, 0, 0, 0};
    return frame;
}

// The same bytes are in docs/wire-format.md.
TEST(WireFrameTest, RequestAndReplyHaveTheDocumentedBytes)
{
    std::string request =
        "5a4c5731"
        "0200"
        "0000"
        "07000000"
        "01000000"
        "1100000000000000"
        "2200000000000000"
        "3300000000000000"
        "4400000000000000"
        "04000000"
        "14010000"
        "2a000000"
        "d2040000"
        "03000000"
        "0500000000000000"
        "61002e004200" +
        Zeros(2 * (kMaxDescriptor - 3));
    EXPECT_EQ(Hex(Encode(GoldenRequest())), request);
    std::string reply =
        "5a4c5731"
        "0300"
        "0000"
        "00000000"
        "00000000"
        "1100000000000000"
        "0000000000000000"
        "0000000000000000"
        "0000000000000000"
        "08000000"
        "08000000"
        "0100000002000000";
    EXPECT_EQ(Hex(Encode(GoldenReply())), reply);
}

TEST(WireFrameTest, FramesComeBackWholeHoweverTheBytesArrive)
{
    std::vector<uint8_t> stream = Encode(GoldenRequest());
    std::vector<uint8_t> reply = Encode(GoldenReply());
    stream.insert(stream.end(), reply.begin(), reply.end());
    for (size_t chunk : {size_t{1}, size_t{7}, stream.size()}) {
        FrameReader reader;
        std::vector<Frame> frames;
        for (size_t offset = 0; offset < stream.size(); offset += chunk) {
            const uint8_t* input = stream.data() + offset;
            size_t size = std::min(chunk, stream.size() - offset);
            Frame frame;
            while (size > 0) {
                FrameReader::Status status = reader.Feed(input, size, frame);
                ASSERT_NE(status, FrameReader::Status::BROKEN);
                if (status == FrameReader::Status::FRAME) {
                    frames.push_back(frame);
                }
            }
        }
        ASSERT_EQ(frames.size(), 2u) << chunk;
        EXPECT_EQ(frames[0].objects, GoldenRequest().objects);
        EXPECT_EQ(frames[0].tag, 0x22u);
        EXPECT_EQ(frames[1].data, GoldenReply().data);
        EXPECT_TRUE(reader.AtFrameBoundary());
    }
}

TEST(WireFrameTest, MalformedHeadersBreakTheStreamBeforeAnyPayloadIsRead)
{
    struct Case {
        const char* name;
        size_t offset;
        uint32_t value;
        const char* error;
    };
    const Case cases[] = {
        {"magic", 0, 0x12345678, "bad magic"},
        {"type", 4, 99, "unknown frame type 99"},
        {"data size", 48, 1u << 20, "frame over the size limit"},
        {"payload size", 52, 0xffffffff, "frame over the size limit"},
        {"object count", 12, 0x10000000, "frame over the size limit"},
        {"mismatch", 52, 3, "sizes inconsistent with the payload"},
    };
    for (const Case& c : cases) {
        std::vector<uint8_t> bytes = Encode(GoldenReply());
        for (size_t i = 0; i < 4; ++i) {
            bytes[c.offset + i] = static_cast<uint8_t>(c.value >> (8 * i));
        }
        FrameReader reader;
        const uint8_t* input = bytes.data();
        size_t size = WireFormat::kHeaderSize;
        Frame frame;
        EXPECT_EQ(reader.Feed(input, size, frame), FrameReader::Status::BROKEN) << c.name;
        EXPECT_EQ(reader.Error(), c.error) << c.name;
    }
}

TEST(WireFrameTest, TooLongDescriptorsAndHalfFramesAreRefused)
{
    Frame frame = GoldenRequest();
    frame.objects[0].descriptor.assign(kMaxDescriptor + 1, u'x');
    EXPECT_TRUE(Encode(frame).empty());

    std::vector<uint8_t> bytes = Encode(GoldenRequest());
    bytes[kHeaderSize + 4 + 4] = 200;  // descriptor length of the first entry
    FrameReader reader;
    const uint8_t* input = bytes.data();
    size_t size = bytes.size();
    EXPECT_EQ(reader.Feed(input, size, frame), FrameReader::Status::BROKEN);
    EXPECT_EQ(reader.Error(), "descriptor of 200 units over the limit");

    FrameReader half;
    input = bytes.data();
    size = kHeaderSize + 2;
    EXPECT_EQ(half.Feed(input, size, frame), FrameReader::Status::NEED_MORE);
    EXPECT_FALSE(half.AtFrameBoundary());
}

}  // namespace
}  // namespace Tarvo::WireFormat
