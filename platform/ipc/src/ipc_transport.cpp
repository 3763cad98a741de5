#include "ipc_transport.h"

#include <atomic>
#include <mutex>

#include "calling_context.h"
#include "in_process_transport.h"

namespace Tarvo {
namespace {
std::mutex& InstallMutex()
{
    static auto* mutex = new std::mutex();
    return *mutex;
}

// Set once; read on every request, so without a lock after that.
std::atomic<IPCTransport*> gTransport{nullptr};

IPCTransport* TakeOrInstall(IPCTransport* candidate)
{
    std::lock_guard<std::mutex> lock(InstallMutex());
    IPCTransport* current = gTransport.load(std::memory_order_acquire);
    if (current == nullptr) {
        current = candidate != nullptr ? candidate : new InProcessTransport();
        gTransport.store(current, std::memory_order_release);
    }
    return current;
}
}  // namespace

IPCTransport& IPCTransport::Get()
{
    if (IPCTransport* transport = gTransport.load(std::memory_order_acquire)) {
        return *transport;
    }
    return *TakeOrInstall(nullptr);
}

bool IPCTransport::Install(IPCTransport* transport)
{
    return transport != nullptr && TakeOrInstall(transport) == transport;
}

uint64_t IPCTransport::CurrentTag()
{
    return CallingContext::Tag();
}

IPCTransport::ScopedTag::ScopedTag(uint64_t tag) : previous_(CallingContext::Tag())
{
    CallingContext::SetTag(tag);
}

IPCTransport::ScopedTag::~ScopedTag()
{
    CallingContext::SetTag(previous_);
}

}  // namespace Tarvo
