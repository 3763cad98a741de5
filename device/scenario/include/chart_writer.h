#ifndef ZEL_DEVICE_CHART_WRITER_H
#define ZEL_DEVICE_CHART_WRITER_H

// Draws a run's trace as an SVG timeline: the lanes of ChartLanes, each labelled on the left, over
// a time axis in seconds from power-on to the end of the run. The result is well-formed XML in
// UTF-8 whatever the traced texts hold (they are escaped, invalid bytes replaced).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "trace.h"

namespace Tarvo::Emu {

class ChartWriter {
public:
    static std::string Render(const std::vector<TraceEvent>& events, int64_t endMs);

    // Text made safe for XML character data and attribute values.
    static std::string Escape(std::string_view text);
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_CHART_WRITER_H
