#include "expect_checker.h"

#include <algorithm>
#include <optional>

#include "json_pointer.h"

namespace Tarvo::Emu {
namespace {
// FIELD, or FIELD/PATH into an object-valued field.
std::optional<TraceValue> FieldValue(const TraceEvent& event, const std::string& field)
{
    const size_t slash = field.find('/');
    const TraceValue* value = event.Find(field.substr(0, slash));
    if (value == nullptr) {
        return std::nullopt;
    }
    if (slash == std::string::npos) {
        return *value;
    }
    const auto* object = std::get_if<TraceObject>(value);
    return object != nullptr ? JsonAt(object->json, field.substr(slash + 1)) : std::nullopt;
}

bool FieldHolds(const TraceValue& value, const std::string& expected)
{
    if (const auto* items = std::get_if<std::vector<std::string>>(&value)) {
        // [] matches only an empty array, which no element could.
        return items->empty() ? expected == "[]" : std::find(items->begin(), items->end(), expected) != items->end();
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
        const std::optional<TraceValue> value = FieldValue(event, field.first);
        return value.has_value() && FieldHolds(*value, field.second);
    });
}

void ExpectChecker::Index(const Trace& trace)
{
    for (const size_t size = trace.Size(); indexed_ < size; ++indexed_) {
        byKind_[trace.At(indexed_).ev].push_back(indexed_);
        ++eventsRead_;
    }
}

ExpectChecker::Result ExpectChecker::Check(const Cmd::Expect& expect, const Trace& trace)
{
    Index(trace);
    static const std::vector<size_t> none;
    const auto kind = byKind_.find(expect.ev);
    const std::vector<size_t>& positions = kind == byKind_.end() ? none : kind->second;
    return expect.none ? CheckNone(expect, trace, positions) : CheckExpect(expect, trace, positions);
}

ExpectChecker::Result ExpectChecker::CheckExpect(const Cmd::Expect& expect, const Trace& trace,
                                                 const std::vector<size_t>& positions)
{
    Result result;
    for (auto it = std::lower_bound(positions.begin(), positions.end(), windowStart_); it != positions.end(); ++it) {
        const TraceEvent& event = trace.At(*it);
        ++eventsRead_;
        if (Matches(event, expect.ev, expect.fields)) {
            windowStart_ = *it + 1;
            none_.clear();
            result.ok = true;
            result.seen.clear();
            return result;
        }
        result.seen.push_back(&event);
    }
    return result;
}

ExpectChecker::Result ExpectChecker::CheckNone(const Cmd::Expect& expect, const Trace& trace,
                                               const std::vector<size_t>& positions)
{
    // Lengths keep keys apart whatever the values hold.
    std::string key = expect.ev;
    for (const auto& [field, value] : expect.fields) {
        key += ' ' + field + '=' + std::to_string(value.size()) + ':' + value;
    }
    auto [progress, fresh] = none_.try_emplace(std::move(key));
    NoneProgress& read = progress->second;
    if (fresh) {
        read.next =
            static_cast<size_t>(std::lower_bound(positions.begin(), positions.end(), windowStart_) - positions.begin());
    }
    for (; read.next < positions.size(); ++read.next) {
        ++eventsRead_;
        if (Matches(trace.At(positions[read.next]), expect.ev, expect.fields)) {
            read.matches.push_back(positions[read.next]);
        }
    }
    Result result;
    result.ok = read.matches.empty();
    for (const size_t position : read.matches) {
        result.seen.push_back(&trace.At(position));
    }
    return result;
}

}  // namespace Tarvo::Emu
