#include "ipc_object_stub.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "calling_context.h"
#include "ipc_transport.h"
#include "ipc_types.h"

namespace Tarvo {
namespace {
// Bounds what a dump request may cost: its arguments and the text carried back.
constexpr int32_t MAX_DUMP_ARGS = 64;
constexpr size_t MAX_DUMP_TEXT = 128 * 1024;  // within a reply parcel's capacity

bool ReadDumpArgs(MessageParcel& data, std::vector<std::u16string>& args)
{
    // A stub that checks interface tokens has read it already; the default one skips it.
    if (data.GetReadPosition() == 0) {
        (void)data.ReadInterfaceToken();
    }
    int32_t count = 0;
    if (data.GetReadableBytes() == 0) {
        return true;  // no arguments at all
    }
    if (!data.ReadInt32(count) || count < 0 || count > MAX_DUMP_ARGS) {
        return false;
    }
    args.resize(static_cast<size_t>(count));
    for (auto& arg : args) {
        if (!data.ReadString16(arg)) {
            return false;
        }
    }
    return true;
}

// What the object wrote to fd, from the start, cut at MAX_DUMP_TEXT.
std::string ReadBack(int fd)
{
    std::string text;
    if (lseek(fd, 0, SEEK_SET) != 0) {
        return text;
    }
    char buffer[4096];
    while (text.size() < MAX_DUMP_TEXT) {
        ssize_t got = read(fd, buffer, sizeof(buffer));
        if (got <= 0) {
            break;
        }
        text.append(buffer, static_cast<size_t>(got));
    }
    text.resize(std::min(text.size(), MAX_DUMP_TEXT));
    return text;
}
}  // namespace

IPCObjectStub::IPCObjectStub(std::u16string descriptor, bool serialInvokeFlag)
    : IRemoteObject(std::move(descriptor)),
      owner_(IPCTransport::Get().CurrentSession()),
      serialInvokeFlag_(serialInvokeFlag)
{
}

int IPCObjectStub::SendRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (IsOwnedBy(IPCTransport::Get().CurrentSession())) {
        // A call within the process: the caller is the process itself, whatever request the
        // thread may be handling.
        CallingContext::Scope local(nullptr, CallingContext::Tag());
        return OnRemoteRequest(code, data, reply, option);
    }
    sptr<IPCObjectStub> self = wptr<IPCObjectStub>(this).promote();
    if (self == nullptr) {
        return ERR_INVALID_VALUE;
    }
    return IPCTransport::Get().TransactStub(self, code, data, reply, option);
}

int IPCObjectStub::OnRemoteRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption&)
{
    switch (code) {
        case PING_TRANSACTION:
            return ERR_NONE;
        case INTERFACE_TRANSACTION:
            return reply.WriteString16(descriptor_) ? ERR_NONE : ERR_INVALID_VALUE;
        case DUMP_TRANSACTION:
            return DumpToReply(data, reply);
        default:
            return IPC_STUB_UNKNOW_TRANS_ERR;
    }
}

int IPCObjectStub::Dump(int, const std::vector<std::u16string>&)
{
    return ERR_NONE;
}

// Parcels carry no descriptors: the object writes to a memory file of ours, and the text travels back.
int IPCObjectStub::DumpToReply(MessageParcel& data, MessageParcel& reply)
{
    std::vector<std::u16string> args;
    if (!ReadDumpArgs(data, args)) {
        return ERR_INVALID_VALUE;
    }
    int fd = memfd_create("ipc_dump", MFD_CLOEXEC);
    if (fd < 0) {
        return ERR_INVALID_VALUE;
    }
    int result = Dump(fd, args);
    std::string text = ReadBack(fd);
    close(fd);
    return reply.WriteInt32(result) && reply.WriteString(text) ? ERR_NONE : ERR_INVALID_VALUE;
}

int IPCObjectStub::DispatchRequest(uint32_t code, MessageParcel& data, MessageParcel& reply, MessageOption& option)
{
    if (!serialInvokeFlag_) {
        return OnRemoteRequest(code, data, reply, option);
    }
    // Held across the handler on purpose: that is what serial invocation means.
    std::lock_guard<std::mutex> serial(serialMutex_);
    return OnRemoteRequest(code, data, reply, option);
}

bool IPCObjectStub::IsObjectDead() const
{
    std::shared_ptr<ProcessSession> owner = GetOwner();
    return owner == nullptr || !owner->IsAlive();
}

bool IPCObjectStub::AddDeathRecipient(const sptr<DeathRecipient>&)
{
    return false;
}

bool IPCObjectStub::RemoveDeathRecipient(const sptr<DeathRecipient>&)
{
    return false;
}

}  // namespace Tarvo
