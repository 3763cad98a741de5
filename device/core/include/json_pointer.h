#ifndef ZEL_DEVICE_JSON_POINTER_H
#define ZEL_DEVICE_JSON_POINTER_H

// Reads into a JSON object held as text (the state of a dump event), for expect lines.
// Nesting deeper than 64 levels is refused.

#include <optional>
#include <string>

#include "trace.h"

namespace Tarvo::Emu {

// Whether text is exactly one JSON object (blanks around it allowed).
bool IsJsonObject(const std::string& text);

// The value at `pointer` ("games/targets/com.a", "scenes/active/0/scene": member names and array
// indexes separated by '/') inside the object `text`, as an expect compares it: a string as its
// text, a number, true, false or null as written, an array of those as a list of their texts, and
// anything else as JSON. Nothing when the path leads nowhere.
std::optional<TraceValue> JsonAt(const std::string& text, const std::string& pointer);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_JSON_POINTER_H
