#ifndef ZEL_DEVICE_TRACE_KINDS_H
#define ZEL_DEVICE_TRACE_KINDS_H

// The kinds of trace event and their fields, as the device traces them: `expect` lines are checked
// against this so that a misspelt kind or field is an error instead of a check that can never
// (or always) hold. Extend it together with the device.

#include <string>
#include <vector>

namespace Tarvo::Emu {

// The fields of kind ev, or null for an unknown kind.
const std::vector<std::string>* TraceKindFields(const std::string& ev);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_TRACE_KINDS_H
