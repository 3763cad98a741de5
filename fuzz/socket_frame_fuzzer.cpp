// The socket transport's frame reader over the bytes a hostile peer may send, cut into pieces the
// input chooses. It never reads past what it was given, and every frame it yields is as long as
// its encoding and reads back from that encoding unchanged.
//
// Input: byte 0 is the size of the pieces the stream arrives in (1..256); the rest is the stream.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "wire_frame.h"

using namespace Tarvo::WireFormat;

namespace {
bool Same(const Frame& a, const Frame& b)
{
    return a.type == b.type && a.flags == b.flags && a.code == b.code && a.id == b.id && a.tag == b.tag &&
           a.target == b.target && a.data == b.data && a.objects == b.objects;
}

bool ReadsBack(const Frame& frame, size_t consumed)
{
    std::vector<uint8_t> encoded = Encode(frame);
    if (encoded.size() != consumed) {
        return false;
    }
    FrameReader again;
    Frame decoded;
    const uint8_t* input = encoded.data();
    size_t left = encoded.size();
    return again.Feed(input, left, decoded) == FrameReader::Status::FRAME && left == 0 && Same(frame, decoded);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1) {
        return 0;
    }
    const size_t piece = static_cast<size_t>(data[0]) + 1;
    const uint8_t* stream = data + 1;
    const size_t length = size - 1;
    FrameReader reader;
    size_t frameStart = 0;
    size_t offset = 0;
    while (offset < length) {
        const size_t chunk = std::min(piece, length - offset);
        const uint8_t* input = stream + offset;
        size_t left = chunk;
        while (left > 0) {
            Frame frame;
            const uint8_t* before = input;
            FrameReader::Status status = reader.Feed(input, left, frame);
            if (input < before || static_cast<size_t>(input - stream) > length) {
                std::abort();  // read outside what it was given
            }
            if (status == FrameReader::Status::BROKEN) {
                return 0;
            }
            if (status == FrameReader::Status::FRAME) {
                const size_t frameEnd = static_cast<size_t>(input - stream);
                if (!ReadsBack(frame, frameEnd - frameStart)) {
                    std::abort();
                }
                frameStart = frameEnd;
            } else if (left != 0) {
                std::abort();  // asked for more with bytes still in hand
            }
        }
        offset += chunk;
    }
    return 0;
}
