#ifndef TARVO_IPC_MESSAGE_PARCEL_H
#define TARVO_IPC_MESSAGE_PARCEL_H

// The parcel of a request or reply: the bytes of Parcel plus a table of the remote objects it
// carries. Objects travel by reference, never as pointers: a remote object is written as the
// uint32 kObjectMarker followed by the uint32 index of its table entry, and the entry holds the
// object's wire value (IPCTransport) and a reference that keeps it alive while the parcel lives.
//
// Contract:
//  - Copying copies the bytes, the read position and the object table.
//  - WriteRemoteObject() stores what the transport can carry; ReadRemoteObject() validates the
//    marker and the index and hands the reading thread's process its own view of the object: the
//    object itself in the process that owns it, a proxy elsewhere.
//  - An interface token is a string16 holding the interface descriptor.

#include <cstdint>
#include <string>
#include <vector>

#include "iremote_object.h"
#include "parcel.h"
#include "refbase.h"

namespace Tarvo {

// A remote object as a parcel carries it; what the value means is the transport's business.
struct WireObject {
    enum Kind : uint32_t {
        NONE = 0,
        LOCAL = 1,   // an object of the writing process: its cookie there
        HANDLE = 2,  // an object of another process: the writing process's handle for it
    };
    uint32_t kind = NONE;
    uint64_t value = 0;

    bool operator==(const WireObject&) const = default;
};

class MessageParcel : public Parcel {
public:
    static constexpr uint32_t kObjectMarker = 0x4F424A21;

    MessageParcel() = default;
    MessageParcel(const MessageParcel&) = default;
    MessageParcel& operator=(const MessageParcel&) = default;
    MessageParcel(MessageParcel&&) = default;
    MessageParcel& operator=(MessageParcel&&) = default;
    ~MessageParcel() override = default;

    // Replaces the bytes and empties the object table.
    bool ParseFrom(const uint8_t* data, size_t size) override;
    void FlushBuffer() override;

    bool WriteInterfaceToken(const std::u16string& name);
    // Empty if no token can be read.
    std::u16string ReadInterfaceToken();

    // False for a null object, an object the driver cannot carry, or no room left.
    bool WriteRemoteObject(const sptr<IRemoteObject>& object);
    // Null (read position unchanged) on a wrong marker or index.
    sptr<IRemoteObject> ReadRemoteObject();

    size_t GetObjectCount() const { return objects_.size(); }

    // For transports: the object table as written, and the table of a parcel that arrived.
    struct ObjectEntry {
        WireObject wire;
        sptr<IRemoteObject> hold;  // keeps the object (or its handle) alive while the parcel lives
    };
    const std::vector<ObjectEntry>& GetObjects() const { return objects_; }
    void SetObjects(std::vector<ObjectEntry> objects) { objects_ = std::move(objects); }

private:
    std::vector<ObjectEntry> objects_;
};

}  // namespace Tarvo

#endif  // TARVO_IPC_MESSAGE_PARCEL_H
