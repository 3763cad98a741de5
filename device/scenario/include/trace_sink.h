#ifndef ZEL_DEVICE_TRACE_SINK_H
#define ZEL_DEVICE_TRACE_SINK_H

// Where the player sends trace events as the run goes: every event once, in trace order, from the
// player's thread only. Flush() follows each batch, so output survives a crash that follows.

#include "trace.h"

namespace Tarvo::Emu {

class TraceSink {
public:
    virtual ~TraceSink() = default;
    virtual void Write(const TraceEvent& event) = 0;
    virtual void Flush() = 0;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_TRACE_SINK_H
