#ifndef TARVO_EVENTHANDLER_INNER_EVENT_H
#define TARVO_EVENTHANDLER_INNER_EVENT_H

// A unit of work for an EventHandler: a task callback with a name (RemoveTask matches it) and the
// place in the source that created it (for dumps).
//
// Contract: events are created only through Get() and travel as Pointer, so exactly one owner at a
// time; the queue that accepts one owns it until it has run or been dropped.

#include <functional>
#include <memory>
#include <string>

namespace Tarvo::AppExecFwk {

class InnerEvent {
public:
    using Callback = std::function<void()>;
    using Pointer = std::unique_ptr<InnerEvent, void (*)(InnerEvent*)>;

    // Defaults capture the call site of whoever lets them default (PostTask's caller, typically).
    // The texts are the compiler's literals, so a posted task copies two pointers, not two strings.
    struct Caller {
        const char* file_;
        int line_;
        const char* func_;
        constexpr Caller(const char* file = __builtin_FILE(), int line = __builtin_LINE(),
                         const char* func = __builtin_FUNCTION())
            : file_(file), line_(line), func_(func)
        {
        }
    };

    static Pointer Get(Callback callback, const std::string& name = std::string(), const Caller& caller = {});

    InnerEvent(const InnerEvent&) = delete;
    InnerEvent& operator=(const InnerEvent&) = delete;

    const std::string& GetTaskName() const { return name_; }
    const Callback& GetTaskCallback() const { return callback_; }
    const Caller& GetCaller() const { return caller_; }
    bool HasTask() const { return static_cast<bool>(callback_); }

private:
    InnerEvent(Callback callback, const std::string& name, const Caller& caller);
    ~InnerEvent() = default;
    static void Release(InnerEvent* event);

    Callback callback_;
    std::string name_;
    Caller caller_;
};

}  // namespace Tarvo::AppExecFwk

#endif  // TARVO_EVENTHANDLER_INNER_EVENT_H
