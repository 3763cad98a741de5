#include "ipc_transport.h"

#include <atomic>
#include <cstdlib>

#include "calling_context.h"
#include "transport_bridge.h"

namespace Tarvo {
namespace {
std::atomic<IPCTransport*> gInstalled{nullptr};
std::atomic<bool> gSealed{false};
}  // namespace

IPCTransport* InstalledTransport()
{
    gSealed.store(true, std::memory_order_relaxed);
    return gInstalled.load(std::memory_order_acquire);
}

IPCTransport::ScopedTag::ScopedTag(uint64_t tag) : previous_(CallingContext::Tag())
{
    CallingContext::SetTag(tag);
}

IPCTransport::ScopedTag::~ScopedTag()
{
    CallingContext::SetTag(previous_);
}

IPCTransport& IPCTransport::Get()
{
    IPCTransport* installed = InstalledTransport();
    if (installed == nullptr) {
        // The in-process driver does not implement this interface yet.
        std::abort();
    }
    return *installed;
}

bool IPCTransport::Install(IPCTransport* transport)
{
    if (transport == nullptr || gSealed.load(std::memory_order_relaxed)) {
        return false;
    }
    IPCTransport* expected = nullptr;
    return gInstalled.compare_exchange_strong(expected, transport, std::memory_order_acq_rel);
}

uint64_t IPCTransport::CurrentTag()
{
    return CallingContext::Tag();
}

}  // namespace Tarvo
