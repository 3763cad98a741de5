#include "trace.h"

#include <cstdio>

#include "json_text.h"
#include "platform_clock.h"

namespace Tarvo::Emu {

std::string JsonString(const std::string& text)
{
    return JsonQuote(text);
}

namespace {
std::string ValueJson(const TraceValue& value)
{
    if (std::holds_alternative<std::nullptr_t>(value)) {
        return "null";
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag ? "true" : "false";
    }
    if (const auto* number = std::get_if<int64_t>(&value)) {
        return std::to_string(*number);
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return JsonString(*text);
    }
    if (const auto* object = std::get_if<TraceObject>(&value)) {
        return object->json;
    }
    std::string out = "[";
    for (const auto& item : std::get<std::vector<std::string>>(value)) {
        out += (out.size() > 1 ? "," : "") + JsonString(item);
    }
    return out + "]";
}
}  // namespace

std::string ValueText(const TraceValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    return ValueJson(value);
}

std::string TraceEvent::Json() const
{
    std::string out = "{\"t\":" + std::to_string(t) + ",\"ev\":" + JsonString(ev);
    for (const auto& field : fields) {
        out += "," + JsonString(field.name) + ":" + ValueJson(field.value);
    }
    return out + "}";
}

const TraceValue* TraceEvent::Find(const std::string& name) const
{
    for (const auto& field : fields) {
        if (field.name == name) {
            return &field.value;
        }
    }
    return nullptr;
}

void Trace::Emit(std::string ev, std::vector<TraceField> fields)
{
    int64_t now = PlatformClock::now().time_since_epoch().count();
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& field : fields) {
        if (auto* text = std::get_if<std::string>(&field.value)) {
            HideIn(*text);
        } else if (auto* object = std::get_if<TraceObject>(&field.value)) {
            HideIn(object->json);
        } else if (auto* items = std::get_if<std::vector<std::string>>(&field.value)) {
            for (auto& item : *items) {
                HideIn(item);
            }
        }
    }
    events_.push_back(TraceEvent{now, std::move(ev), std::move(fields)});
    grown_.notify_all();
}

bool Trace::WaitBeyond(size_t index, std::chrono::milliseconds limit) const
{
    std::unique_lock<std::mutex> lock(mutex_);
    return grown_.wait_for(lock, limit, [&] { return events_.size() > index; });
}

void Trace::Hide(std::string text, std::string placeholder)
{
    std::lock_guard<std::mutex> lock(mutex_);
    hidden_ = std::move(text);
    placeholder_ = std::move(placeholder);
}

void Trace::HideIn(std::string& text) const
{
    if (hidden_.empty()) {
        return;
    }
    const auto continuesName = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
               c == '-';
    };
    for (size_t at = text.find(hidden_); at != std::string::npos; at = text.find(hidden_, at)) {
        const size_t after = at + hidden_.size();
        if (after < text.size() && continuesName(text[after])) {
            at += 1;
            continue;
        }
        text.replace(at, hidden_.size(), placeholder_);
        at += placeholder_.size();
    }
}

const TraceEvent& Trace::At(size_t index) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return events_.at(index);
}

std::vector<TraceEvent> Trace::EventsSince(size_t index) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (index >= events_.size()) {
        return {};
    }
    return std::vector<TraceEvent>(events_.begin() + static_cast<std::ptrdiff_t>(index), events_.end());
}

size_t Trace::Size() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return events_.size();
}

}  // namespace Tarvo::Emu
