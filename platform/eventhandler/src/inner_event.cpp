#include "inner_event.h"

#include <utility>

namespace Tarvo::AppExecFwk {

InnerEvent::Caller::Caller(std::string file, int line, std::string func)
    : file_(std::move(file)), line_(line), func_(std::move(func))
{
}

InnerEvent::InnerEvent(const Callback& callback, const std::string& name, const Caller& caller)
    : callback_(callback), name_(name), caller_(caller)
{
}

InnerEvent::Pointer InnerEvent::Get(const Callback& callback, const std::string& name, const Caller& caller)
{
    return Pointer(new InnerEvent(callback, name, caller), &InnerEvent::Release);
}

void InnerEvent::Release(InnerEvent* event)
{
    delete event;
}

}  // namespace Tarvo::AppExecFwk
