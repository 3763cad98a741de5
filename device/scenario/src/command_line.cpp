#include "command_line.h"

#include "input_text.h"

namespace Tarvo::Emu {
namespace {
bool Fail(const std::string& message, std::string* error)
{
    *error = message;
    return false;
}

// One option of run at args[*i]; moves *i past its value.
bool RunOption(const std::vector<std::string>& args, size_t* i, CommandLine* line, std::string* error)
{
    const std::string& name = args[*i];
    std::optional<std::string>* valued = name == "--trace"      ? &line->trace
                                         : name == "--chart"    ? &line->chart
                                         : name == "--data-dir" ? &line->dataDir
                                                                : nullptr;
    if (valued != nullptr) {
        if (*i + 1 >= args.size() || args[*i + 1].empty()) {
            return Fail(name + " needs a value", error);
        }
        *valued = args[++*i];
        return true;
    }
    bool* flag = name == "--realtime"    ? &line->realtime
                 : name == "--quiet"     ? &line->quiet
                 : name == "--log"       ? &line->log
                 : name == "--processes" ? &line->processes
                                         : nullptr;
    if (flag == nullptr) {
        return Fail("unknown option " + Shown(name), error);
    }
    *flag = true;
    return true;
}

// An option of serve, send or trace at args[*i]; anything else of send is a line.
bool DeviceOption(const std::vector<std::string>& args, size_t* i, CommandLine* line, std::string* error)
{
    const std::string& name = args[*i];
    const bool serve = line->mode == CommandLine::Mode::SERVE;
    std::optional<std::string>* valued = name == "--dir"                 ? &line->dir
                                         : serve && name == "--data-dir" ? &line->dataDir
                                         : serve && name == "--config"   ? &line->config
                                                                         : nullptr;
    if (valued != nullptr) {
        if (*i + 1 >= args.size() || args[*i + 1].empty()) {
            return Fail(name + " needs a value", error);
        }
        *valued = args[++*i];
        return true;
    }
    if (serve && name == "--log") {
        line->log = true;
    } else if (line->mode == CommandLine::Mode::TRACE && name == "-f") {
        line->follow = true;
    } else if (line->mode == CommandLine::Mode::SEND) {
        line->lines.push_back(name);
    } else {
        return Fail("unknown option " + Shown(name), error);
    }
    return true;
}

bool ParseDeviceCommand(const std::vector<std::string>& args, CommandLine* line, std::string* error)
{
    for (size_t i = 1; i < args.size(); ++i) {
        if (!DeviceOption(args, &i, line, error)) {
            return false;
        }
    }
    return true;
}
}  // namespace

bool CommandLine::Parse(const std::vector<std::string>& args, CommandLine* line, std::string* error)
{
    *line = CommandLine();
    if (args.empty()) {
        return Fail("a command is needed", error);
    }
    const std::string& command = args[0];
    if (command == "--help" || command == "-h" || command == "--version") {
        line->mode = command == "--version" ? Mode::VERSION : Mode::HELP;
        return args.size() == 1 || Fail("nothing may follow " + Shown(command), error);
    }
    if (command == "serve" || command == "send" || command == "trace") {
        line->mode = command == "serve" ? Mode::SERVE : command == "send" ? Mode::SEND : Mode::TRACE;
        return ParseDeviceCommand(args, line, error);
    }
    if (command == "check-config") {
        line->mode = Mode::CHECK_CONFIG;
        if (args.size() != 2 || (args[1].size() > 1 && args[1][0] == '-')) {
            return Fail("check-config takes one FILE and no options", error);
        }
        line->scenario = args[1];
        return true;
    }
    if (command != "run" && command != "check") {
        return Fail("unknown command " + Shown(command), error);
    }
    line->mode = command == "run" ? Mode::RUN : Mode::CHECK;
    bool named = false;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg.size() > 1 && arg[0] == '-') {
            if (line->mode == Mode::CHECK) {
                return Fail("check takes no options", error);
            }
            if (!RunOption(args, &i, line, error)) {
                return false;
            }
        } else if (named) {
            return Fail("one scenario at a time (" + Shown(line->scenario) + ", " + Shown(arg) + ")", error);
        } else {
            line->scenario = arg;
            named = true;
        }
    }
    return named || Fail(Shown(command) + " needs a SCENARIO", error);
}

const char* CommandLine::Usage()
{
    return "usage:\n"
           "  zel_device run SCENARIO [--trace FILE|-] [--chart FILE.svg] [--data-dir DIR] [--realtime] [--quiet] "
           "[--log] [--processes]\n"
           "  zel_device check SCENARIO\n"
           "  zel_device check-config FILE\n"
           "  zel_device serve [--dir RUNDIR] [--data-dir DIR] [--config FILE] [--log]\n"
           "  zel_device send [--dir RUNDIR] [LINE...]\n"
           "  zel_device trace [--dir RUNDIR] [-f]\n"
           "  zel_device --help | --version\n"
           "\n"
           "run plays SCENARIO on a freshly booted emulated device, in virtual time unless --realtime.\n"
           "  --trace FILE|-    the JSON Lines trace to FILE (- is stdout, then no timeline)\n"
           "  --chart FILE.svg  an SVG timeline of the run\n"
           "  --data-dir DIR    keep the device's data (settings, parameters) in DIR\n"
           "  --realtime        play against the wall clock\n"
           "  --quiet           no timeline on stdout\n"
           "  --log             the platform log on stderr\n"
           "  --processes       every emulated process a real one\n"
           "check only parses SCENARIO and reports every error.\n"
           "check-config tells what the service would do with the configuration FILE, one finding a line as\n"
           "LINE: what (- for the file as a whole): the schema's verdict, what is read into which table, what is\n"
           "ignored or rejected, what the service decides at start; exit 0 when the service loads FILE, 2 when not.\n"
           "serve boots a device on the real clock and keeps it running until SIGTERM or SIGINT; send plays\n"
           "scenario lines without TIME on it (from stdin when none are given) and prints their requests'\n"
           "results; trace prints its trace so far (-f: and follows it). RUNDIR defaults to\n"
           "$XDG_RUNTIME_DIR/zel_device, else a folder under the temporary directory.\n"
           "\n"
           "exit status: 0 played and every expect held; 1 the device or the service failed; 2 usage or scenario\n"
           "errors (nothing played); 3 an expect failed; 130, 143 interrupted by SIGINT, SIGTERM (the temporary\n"
           "data directory is removed all the same).\n";
}

}  // namespace Tarvo::Emu
