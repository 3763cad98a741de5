#include "ipc_skeleton.h"

#include "calling_context.h"
#include "ipc_driver.h"
#include "transport_bridge.h"
#include "virtual_process.h"

namespace Tarvo {
namespace {
// A copy: the thread's process may be released while the caller uses the identity.
ProcessIdentity CallingIdentity()
{
    if (const ProcessIdentity* caller = CallingContext::RemoteCaller()) {
        return *caller;
    }
    return VirtualProcess::Current()->Identity();
}
}  // namespace

pid_t IPCSkeleton::GetCallingPid()
{
    return CallingIdentity().pid;
}

pid_t IPCSkeleton::GetCallingUid()
{
    return CallingIdentity().uid;
}

uint32_t IPCSkeleton::GetCallingTokenID()
{
    return CallingIdentity().tokenId;
}

uint64_t IPCSkeleton::GetCallingFullTokenID()
{
    return CallingIdentity().fullTokenId;
}

uint32_t IPCSkeleton::GetSelfTokenID()
{
    return VirtualProcess::Current()->Identity().tokenId;
}

bool IPCSkeleton::IsLocalCalling()
{
    return CallingContext::RemoteCaller() == nullptr;
}

sptr<IRemoteObject> IPCSkeleton::GetContextObject()
{
    if (IPCTransport* transport = InstalledTransport()) {
        return transport->GetContextObject();
    }
    return IPCDriver::GetInstance().GetContextObject();
}

bool IPCSkeleton::SetContextObject(const sptr<IRemoteObject>& object)
{
    if (IPCTransport* transport = InstalledTransport()) {
        return transport->SetContextObject(object);
    }
    return IPCDriver::GetInstance().SetContextObject(object);
}

}  // namespace Tarvo
