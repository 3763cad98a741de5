#ifndef ZEL_DEVICE_CHART_LANES_H
#define ZEL_DEVICE_CHART_LANES_H

// What the chart shows, worked out from the trace: one lane per kind of output, each a set of
// bars [begin, end) with a text.
//
//   foreground               mox.package: the first package's name (before the first ':'), until
//                            the next mox.package
//   scene votes              mox.refresh name=VOTER_SCENE: a bar per desc from status=true to
//                            status=false, one row per desc
//   thermal and power votes  mox.refresh name=VOTER_THERMAL: "min=.. max=.." while status=true
//   votes NAME               likewise for any other voter
//   light factor             mox.light: "on" while status=true
//   game BUNDLE/CB           game.fps: the fps value, until the next one for that callback
//
// The first four fixed lanes are always there; the others as they appear. Bars still open at the
// end run to endMs.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "trace.h"

namespace Tarvo::Emu {

struct ChartBar {
    int64_t begin = 0;
    int64_t end = 0;
    std::string text;
    size_t row = 0;
};

struct ChartLane {
    std::string label;
    size_t rows = 1;
    std::vector<ChartBar> bars;
};

class ChartLanes {
public:
    static std::vector<ChartLane> Build(const std::vector<TraceEvent>& events, int64_t endMs);
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_CHART_LANES_H
