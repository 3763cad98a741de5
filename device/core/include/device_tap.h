#ifndef ZEL_DEVICE_DEVICE_TAP_H
#define ZEL_DEVICE_DEVICE_TAP_H

// Where the device's hooks into the platform (the transaction observer, the log sink, the games'
// callback objects) put what they see into the trace.
//
// Contract:
//  - The hooks hold the tap by shared_ptr, so it outlives every call still running in them. After
//    Detach() returns, no call is inside the tap any more and later calls trace nothing: the
//    device (and its trace) may then go.
//  - Traced: every request of a scenario line handled by the service's stub (ipc.done), and every
//    line the service's process logs (log). While a scenario line sends a request to a game's
//    callback object (see Watch), that request's ipc.done and the lines the game's process logs
//    while handling it (app.log) too.

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "hilog.h"
#include "ipc_transport.h"
#include "trace.h"

namespace Tarvo::Emu {

class DeviceTap : public HiviewDFX::LogSink {
public:
    explicit DeviceTap(Trace& trace) : trace_(&trace) {}

    // Emits unless detached.
    void Emit(std::string ev, std::vector<TraceField> fields);
    void SetServicePid(int32_t pid);
    // Scenario line `line` sends a request now: to the service, or (appPid non-zero) to an object
    // with that descriptor in the process of bundle. Holds until the next Watch.
    void Watch(uint64_t line, std::u16string descriptor, int32_t appPid = 0, std::string bundle = {});
    // Whether the watched line's request reached its target's stub (so far).
    bool Delivered() const;

    void OnTransaction(const TransactionRecord& record);
    // Only the lines OnLog traces: the rest are never formatted.
    bool Accepts(const HiviewDFX::LogRecord& record) const override;
    void OnLog(const HiviewDFX::LogRecord& record) override;
    void Detach();

private:
    enum class LogKind { NONE, SERVICE, APP };
    // Call with the lock held; `tag` is the logging thread's.
    LogKind KindOf(const HiviewDFX::LogRecord& record, uint64_t tag) const;
    // The trace to emit into outside the lock (the trace may forward to another process), or null
    // once detached; each non-null Enter() is matched by Leave().
    Trace* Enter();
    void Leave();
    void EmitOutside(Trace* trace, std::string ev, std::vector<TraceField> fields);

    mutable std::mutex mutex_;
    std::condition_variable left_;
    int inside_ = 0;
    Trace* trace_;  // null once detached
    int32_t servicePid_ = 0;
    uint64_t line_ = 0;
    std::u16string descriptor_;
    int32_t appPid_ = 0;
    std::string bundle_;
    bool delivered_ = false;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_DEVICE_TAP_H
