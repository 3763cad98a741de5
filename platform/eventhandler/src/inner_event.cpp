#include "inner_event.h"

#include <utility>

namespace Tarvo::AppExecFwk {

InnerEvent::InnerEvent(Callback callback, const std::string& name, const Caller& caller)
    : callback_(std::move(callback)), name_(name), caller_(caller)
{
}

InnerEvent::Pointer InnerEvent::Get(Callback callback, const std::string& name, const Caller& caller)
{
    return Pointer(new InnerEvent(std::move(callback), name, caller), &InnerEvent::Release);
}

void InnerEvent::Release(InnerEvent* event)
{
    delete event;
}

}  // namespace Tarvo::AppExecFwk
