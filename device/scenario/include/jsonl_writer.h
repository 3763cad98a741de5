#ifndef ZEL_DEVICE_JSONL_WRITER_H
#define ZEL_DEVICE_JSONL_WRITER_H

// The JSON Lines trace: every event, `log` and `expect` included, one JSON object a line.

#include <ostream>

#include "trace_sink.h"

namespace Tarvo::Emu {

class JsonlWriter : public TraceSink {
public:
    explicit JsonlWriter(std::ostream& out) : out_(out) {}

    void Write(const TraceEvent& event) override { out_ << event.Json() << '\n'; }
    void Flush() override { out_.flush(); }

private:
    std::ostream& out_;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_JSONL_WRITER_H
