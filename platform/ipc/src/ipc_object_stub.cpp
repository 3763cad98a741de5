#include "ipc_object_stub.h"

#include "calling_context.h"
#include "ipc_transport.h"
#include "ipc_types.h"

namespace Tarvo {

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

int IPCObjectStub::OnRemoteRequest(uint32_t code, MessageParcel&, MessageParcel& reply, MessageOption&)
{
    switch (code) {
        case PING_TRANSACTION:
            return ERR_NONE;
        case INTERFACE_TRANSACTION:
            return reply.WriteString16(descriptor_) ? ERR_NONE : ERR_INVALID_VALUE;
        default:
            return IPC_STUB_UNKNOW_TRANS_ERR;
    }
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
