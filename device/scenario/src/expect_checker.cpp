#include "expect_checker.h"

#include <algorithm>

namespace Tarvo::Emu {
namespace {
bool FieldHolds(const TraceValue& value, const std::string& expected)
{
    if (const auto* items = std::get_if<std::vector<std::string>>(&value)) {
        return std::find(items->begin(), items->end(), expected) != items->end();
    }
    return ValueText(value) == expected;
}
}  // namespace

bool ExpectChecker::Matches(const TraceEvent& event, const std::string& ev,
                            const std::vector<std::pair<std::string, std::string>>& fields)
{
    if (event.ev != ev) {
        return false;
    }
    return std::all_of(fields.begin(), fields.end(), [&event](const auto& field) {
        const TraceValue* value = event.Find(field.first);
        return value != nullptr && FieldHolds(*value, field.second);
    });
}

ExpectChecker::Result ExpectChecker::Check(const Cmd::Expect& expect, const Trace& trace)
{
    const std::vector<TraceEvent> window = trace.EventsSince(windowStart_);
    Result result;
    for (size_t i = 0; i < window.size(); ++i) {
        const TraceEvent& event = window[i];
        const bool matches = Matches(event, expect.ev, expect.fields);
        if (!expect.none && matches) {
            windowStart_ += i + 1;
            result.ok = true;
            result.seen.clear();
            return result;
        }
        if (expect.none ? matches : event.ev == expect.ev) {
            result.seen.push_back(event);
        }
    }
    result.ok = expect.none && result.seen.empty();
    return result;
}

}  // namespace Tarvo::Emu
