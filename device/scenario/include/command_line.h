#ifndef ZEL_DEVICE_COMMAND_LINE_H
#define ZEL_DEVICE_COMMAND_LINE_H

// The arguments of zel_device:
//   zel_device run SCENARIO [--trace FILE|-] [--chart FILE.svg] [--data-dir DIR] [--realtime] [--quiet] [--log]
//   [--processes]
//   zel_device check SCENARIO
//   zel_device check-config FILE
//   zel_device serve [--dir RUNDIR] [--data-dir DIR] [--config FILE] [--log]
//   zel_device send [--dir RUNDIR] [LINE...]      (no LINE: lines from stdin)
//   zel_device trace [--dir RUNDIR] [-f]
//   zel_device --help | --version
// Options may come before or after SCENARIO; anything else is a usage error.

#include <optional>
#include <string>
#include <vector>

namespace Tarvo::Emu {

struct CommandLine {
    enum class Mode { RUN, CHECK, CHECK_CONFIG, SERVE, SEND, TRACE, HELP, VERSION };

    Mode mode = Mode::HELP;
    std::string scenario;              // check-config: the configuration file
    std::optional<std::string> trace;  // "-": stdout
    std::optional<std::string> chart;
    std::optional<std::string> dataDir;
    bool realtime = false;
    bool quiet = false;
    bool log = false;
    bool processes = false;             // run: every emulated process a real one
    std::optional<std::string> dir;     // serve, send, trace: the run folder
    std::optional<std::string> config;  // serve
    std::vector<std::string> lines;     // send
    bool follow = false;                // trace -f

    // args without the program name. False with a message on a usage error.
    static bool Parse(const std::vector<std::string>& args, CommandLine* line, std::string* error);
    static const char* Usage();
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_COMMAND_LINE_H
