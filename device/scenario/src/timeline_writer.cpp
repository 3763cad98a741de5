#include "timeline_writer.h"

#include <cstdio>

namespace Tarvo::Emu {

std::string TimelineWriter::Line(const TraceEvent& event)
{
    char time[32];
    snprintf(time, sizeof(time), "%8.3f", static_cast<double>(event.t) / 1000.0);
    std::string line = std::string(time) + "  " + event.ev;
    const char* separator = "  ";
    for (const auto& field : event.fields) {
        std::string value = ValueText(field.value);
        if (value.empty() || value.find_first_of(" \t") != std::string::npos) {
            value = "\"" + value + "\"";
        }
        line += separator + field.name + "=" + value;
        separator = " ";
    }
    return line;
}

void TimelineWriter::Write(const TraceEvent& event)
{
    if (event.ev != "log" && event.ev != "app.log") {
        out_ << Line(event) << '\n';
    }
}

}  // namespace Tarvo::Emu
