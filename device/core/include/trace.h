#ifndef ZEL_DEVICE_TRACE_H
#define ZEL_DEVICE_TRACE_H

// The device's record of what crossed the service's boundary, in the order it happened.
// Each event has a virtual time `t` (ms), a kind `ev` and named fields in a fixed order; it
// renders as one JSON object (a line of the JSON Lines trace).
//
// Contract: Emit is thread-safe and never calls out (a trace that forwards its events elsewhere,
// in a process of a device in real processes, overrides it); events are numbered in emission order and
// never removed or changed, so readers poll with EventsSince(index) or look at one with At(index).
// Text hidden with Hide() is replaced in every string field of the events emitted after.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace Tarvo::Emu {

// A JSON object, written into the trace as it is (the state of a dump).
struct TraceObject {
    std::string json;
    bool operator==(const TraceObject&) const = default;
};

using TraceValue = std::variant<std::nullptr_t, bool, int64_t, std::string, std::vector<std::string>, TraceObject>;

struct TraceField {
    std::string name;
    TraceValue value;
};

struct TraceEvent {
    int64_t t = 0;
    std::string ev;
    std::vector<TraceField> fields;

    // {"t":2000,"ev":"mox.refresh","name":"VOTER_SCENE",...}
    std::string Json() const;
    const TraceValue* Find(const std::string& name) const;
};

// A value as an expect line compares it: its JSON text, strings without quotes.
std::string ValueText(const TraceValue& value);
std::string JsonString(const std::string& text);

class Trace {
public:
    Trace() = default;
    virtual ~Trace() = default;
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    // Stamps the event with the platform clock's time.
    virtual void Emit(std::string ev, std::vector<TraceField> fields);
    std::vector<TraceEvent> EventsSince(size_t index) const;
    size_t Size() const;
    // Waits, at most `limit` of real time, until there are more than `index` events.
    bool WaitBeyond(size_t index, std::chrono::milliseconds limit) const;
    // The event numbered index (< Size()); the reference stays valid as long as the trace.
    const TraceEvent& At(size_t index) const;
    // Writes `text` as `placeholder` wherever it appears whole (not followed by more of a file
    // name), so that a run's folder does not make its trace differ from another run's.
    void Hide(std::string text, std::string placeholder);

private:
    void HideIn(std::string& text) const;

    mutable std::mutex mutex_;
    mutable std::condition_variable grown_;
    std::deque<TraceEvent> events_;  // grows at the end only, so references stay valid
    std::string hidden_;
    std::string placeholder_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_TRACE_H
