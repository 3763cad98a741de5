#ifndef ZEL_DEVICE_TIMELINE_WRITER_H
#define ZEL_DEVICE_TIMELINE_WRITER_H

// The short human timeline: one line per traced event except log lines (`log`, `app.log`), as
//   "   2.000  mox.refresh  name=VOTER_SCENE status=true min=0 max=0 desc=BACK_APP_ANIMATION"
// (seconds with 3 decimals right-aligned in 8 columns, the kind, then FIELD=VALUE as expect lines
// compare them; a value that is empty or holds blanks is shown in double quotes).

#include <ostream>
#include <string>

#include "trace_sink.h"

namespace Tarvo::Emu {

class TimelineWriter : public TraceSink {
public:
    explicit TimelineWriter(std::ostream& out) : out_(out) {}

    void Write(const TraceEvent& event) override;
    void Flush() override { out_.flush(); }

    // The line for an event, without its newline.
    static std::string Line(const TraceEvent& event);

private:
    std::ostream& out_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_TIMELINE_WRITER_H
