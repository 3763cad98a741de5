#ifndef ZEL_DEVICE_TRACE_H
#define ZEL_DEVICE_TRACE_H

// The device's record of what crossed the service's boundary, in the order it happened.
// Each event has a virtual time `t` (ms), a kind `ev` and named fields in a fixed order; it
// renders as one JSON object (a line of the JSON Lines trace).
//
// Contract: Emit is thread-safe and never calls out; events are numbered in emission order and
// never removed, so readers poll with EventsSince(index).

#include <cstdint>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace Tarvo::Emu {

using TraceValue = std::variant<std::nullptr_t, bool, int64_t, std::string, std::vector<std::string>>;

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
    // Stamps the event with the platform clock's time.
    void Emit(std::string ev, std::vector<TraceField> fields);
    std::vector<TraceEvent> EventsSince(size_t index) const;
    size_t Size() const;

private:
    mutable std::mutex mutex_;
    std::vector<TraceEvent> events_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_TRACE_H
