#include "message_parcel.h"

#include "ipc_transport.h"

namespace Tarvo {

bool MessageParcel::ParseFrom(const uint8_t* data, size_t size)
{
    if (!Parcel::ParseFrom(data, size)) {
        return false;
    }
    objects_.clear();
    return true;
}

void MessageParcel::FlushBuffer()
{
    Parcel::FlushBuffer();
    objects_.clear();
}

bool MessageParcel::WriteInterfaceToken(const std::u16string& name)
{
    return WriteString16(name);
}

std::u16string MessageParcel::ReadInterfaceToken()
{
    return ReadString16();
}

bool MessageParcel::WriteRemoteObject(const sptr<IRemoteObject>& object)
{
    if (object == nullptr) {
        return false;
    }
    WireObject wire;
    if (!IPCTransport::Get().FlattenObject(object, wire)) {
        return false;
    }
    size_t start = GetWritePosition();
    if (!WriteUint32(kObjectMarker) || !WriteUint32(static_cast<uint32_t>(objects_.size()))) {
        RewindWrite(start);
        return false;
    }
    objects_.push_back({wire, object});
    return true;
}

sptr<IRemoteObject> MessageParcel::ReadRemoteObject()
{
    size_t start = GetReadPosition();
    uint32_t marker = 0;
    uint32_t index = 0;
    if (!ReadUint32(marker) || marker != kObjectMarker || !ReadUint32(index) || index >= objects_.size()) {
        RewindRead(start);
        return nullptr;
    }
    return IPCTransport::Get().UnflattenObject(objects_[index].wire);
}

}  // namespace Tarvo
