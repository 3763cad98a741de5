#include "calling_context.h"

namespace Tarvo {
namespace {
thread_local const ProcessIdentity* tRemoteCaller = nullptr;
thread_local uint64_t tTag = 0;
}  // namespace

const ProcessIdentity* CallingContext::RemoteCaller()
{
    return tRemoteCaller;
}

uint64_t CallingContext::Tag()
{
    return tTag;
}

void CallingContext::SetTag(uint64_t tag)
{
    tTag = tag;
}

CallingContext::Scope::Scope(const ProcessIdentity* remoteCaller, uint64_t tag)
    : previousCaller_(tRemoteCaller), previousTag_(tTag)
{
    tRemoteCaller = remoteCaller;
    tTag = tag;
}

CallingContext::Scope::~Scope()
{
    tRemoteCaller = previousCaller_;
    tTag = previousTag_;
}

}  // namespace Tarvo
