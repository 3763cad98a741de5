#ifndef ZELCTL_ARGS_H
#define ZELCTL_ARGS_H

// zelctl's command line, parsed without touching anything: what to do, or why the words are wrong.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Tarvo::Zelctl {

enum class Verb { HELP, SCENE, RESOLUTION, THERMAL, GAMEFPS, DUMP, LISTEN };

struct Command {
    Verb verb = Verb::HELP;
    std::string topic;   // HELP: the subcommand asked about, empty for the whole command
    std::string runDir;  // --dir; empty: the default run folder
    std::string as;      // the caller it acts as: system, native, shell or a bundle
    std::string pkg;
    std::string scene;
    std::string callbackName = "zelctl";
    uint32_t state = 0;
    int32_t mode = 0;
    int32_t flag = 0;
    uint32_t fps = 0;
    std::vector<std::pair<uint32_t, uint32_t>> thermal;
    bool json = false;
};

// Fills `command`; false with the usage error in `error`.
bool ParseArgs(const std::vector<std::string>& args, Command* command, std::string* error);
// The usage text of a subcommand ("" for the whole command).
std::string Usage(const std::string& topic);

}  // namespace Tarvo::Zelctl

#endif  // ZELCTL_ARGS_H
