#ifndef TARVO_IPC_SOCKET_WIRE_FRAME_H
#define TARVO_IPC_SOCKET_WIRE_FRAME_H

// The frames endpoints exchange over a stream socket (docs/wire-format.md): a fixed header, the
// data bytes, then a table of fixed-size object entries. Everything little-endian.
//
// FrameReader takes the bytes of one connection as they come and yields whole frames. It checks
// the header before it allocates anything, and reports the first breach of the format; the
// connection is then unusable.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Tarvo::WireFormat {

constexpr uint32_t kMagic = 0x31574C5A;  // "ZLW1"
constexpr size_t kHeaderSize = 56;
constexpr size_t kMaxDescriptor = 128;  // UTF-16 units
constexpr size_t kEntrySize = 16 + 2 * kMaxDescriptor;
constexpr size_t kMaxFrame = 1 << 20;

enum FrameType : uint16_t {
    HELLO = 1,
    REQUEST = 2,
    REPLY = 3,
    ACQUIRE = 4,
    RELEASE = 5,
    ACQUIRE_RESULT = 6,
    FREE = 7,
    CONTEXT_LOOKUP = 8,
};

enum FrameFlags : uint16_t {
    FLAG_ONE_WAY = 1,   // REQUEST
    FLAG_BATON = 2,     // REQUEST: the sender held the baton (Sequencer) and waits to get it back
    FLAG_COUNTED = 4,   // REQUEST, one-way: counted as work in flight in the receiver's share
    FLAG_STRONG = 1,    // ACQUIRE, RELEASE
    FLAG_WEAK = 2,      // ACQUIRE, RELEASE
    FLAG_OF_REPLY = 1,  // FREE: the frame freed is a reply
    FLAG_CALLS = 1,     // HELLO: a call channel, for the synchronous calls of one thread
};

struct ObjectEntry {
    int32_t owner = 0;  // emulated pid of the owning endpoint
    uint64_t cookie = 0;
    std::u16string descriptor;

    bool operator==(const ObjectEntry&) const = default;
};

struct Frame {
    uint16_t type = 0;
    uint16_t flags = 0;
    uint32_t code = 0;    // request code; reply status; acquire: pid acted for; result: 0 granted
    uint64_t id = 0;      // transaction id; for replies, results and frees the one answered
    uint64_t tag = 0;     // the sender's request tag
    uint64_t target = 0;  // cookie of the object addressed; hello: the emulated pid claimed
    uint64_t turn = 0;    // in virtual time: the turn the receiver runs the request (or reply) in
    std::vector<uint8_t> data;
    std::vector<ObjectEntry> objects;
};

// Empty if the frame breaks a limit (too large, a descriptor too long).
std::vector<uint8_t> Encode(const Frame& frame);

class FrameReader {
public:
    enum class Status { NEED_MORE, FRAME, BROKEN };

    // Consumes bytes from `input` (advancing it); FRAME once `frame` holds a whole frame.
    Status Feed(const uint8_t*& input, size_t& size, Frame& frame);
    // Called at end of stream: true if no frame was left half read.
    bool AtFrameBoundary() const { return filled_ == 0 && !inPayload_; }
    // Why the stream broke.
    const std::string& Error() const { return error_; }

private:
    Status Break(std::string reason);
    bool CheckHeader();
    Status DecodePayload(Frame& frame);

    uint8_t header_[kHeaderSize] = {};
    size_t filled_ = 0;
    bool inPayload_ = false;
    std::vector<uint8_t> payload_;
    size_t payloadFilled_ = 0;
    std::string error_;
};

}  // namespace Tarvo::WireFormat

#endif  // TARVO_IPC_SOCKET_WIRE_FRAME_H
