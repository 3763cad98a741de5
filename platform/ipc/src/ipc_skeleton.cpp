#include "ipc_skeleton.h"

#include "calling_context.h"
#include "ipc_transport.h"

namespace Tarvo {
namespace {
// A copy: the thread's process may be released while the caller uses the identity.
ProcessIdentity CallingIdentity()
{
    if (const ProcessIdentity* caller = CallingContext::RemoteCaller()) {
        return *caller;
    }
    return IPCTransport::Get().CurrentSession()->Identity();
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
    return IPCTransport::Get().CurrentSession()->Identity().tokenId;
}

bool IPCSkeleton::IsLocalCalling()
{
    return CallingContext::RemoteCaller() == nullptr;
}

sptr<IRemoteObject> IPCSkeleton::GetContextObject()
{
    return IPCTransport::Get().GetContextObject();
}

bool IPCSkeleton::SetContextObject(const sptr<IRemoteObject>& object)
{
    return IPCTransport::Get().SetContextObject(object);
}

}  // namespace Tarvo
