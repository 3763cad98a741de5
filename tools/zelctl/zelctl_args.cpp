#include "zelctl_args.h"

#include <charconv>
#include <map>

namespace Tarvo::Zelctl {
namespace {
struct Verbs {
    Verb verb;
    size_t minWords;
    size_t maxWords;
    const char* usage;
};

const std::map<std::string, Verbs>& Table()
{
    static const std::map<std::string, Verbs> table = {
        {"scene", {Verb::SCENE, 3, 3, "scene PKG SCENE STATE [--as CALLER]    SetScene (default caller: system)"}},
        {"resolution", {Verb::RESOLUTION, 2, 2, "resolution MODE FLAG [--as CALLER]    ChangeResolutionMode"}},
        {"thermal", {Verb::THERMAL, 1, 64, "thermal KEY=VALUE... [--as CALLER]    SetThermalPolicy"}},
        {"gamefps", {Verb::GAMEFPS, 2, 2, "gamefps PKG FPS [--as CALLER]    SetGameFpsForThermalControl"}},
        {"dump", {Verb::DUMP, 0, 0, "dump [--json]    the service's live state"}},
        {"listen", {Verb::LISTEN, 0, 1, "listen --as BUNDLE [CBNAME]    print each frame rate BUNDLE is told"}},
    };
    return table;
}

// Any 64-bit decimal; what travels is its low 32 bits.
bool Number(const std::string& word, uint32_t* value)
{
    const char* end = word.data() + word.size();
    int64_t signedValue = 0;
    if (auto [ptr, ec] = std::from_chars(word.data(), end, signedValue); ec == std::errc() && ptr == end) {
        *value = static_cast<uint32_t>(signedValue);
        return true;
    }
    uint64_t unsignedValue = 0;
    if (auto [ptr, ec] = std::from_chars(word.data(), end, unsignedValue); ec == std::errc() && ptr == end) {
        *value = static_cast<uint32_t>(unsignedValue);
        return true;
    }
    return false;
}

bool NumberOf(const std::string& what, const std::string& word, uint32_t* value, std::string* error)
{
    if (Number(word, value)) {
        return true;
    }
    *error = what + " is not a number: '" + word + "'";
    return false;
}

bool ThermalPairs(const std::vector<std::string>& words, Command* command, std::string* error)
{
    for (const std::string& word : words) {
        size_t equals = word.find('=');
        std::pair<uint32_t, uint32_t> pair;
        if (equals == std::string::npos) {
            *error = "not KEY=VALUE: '" + word + "'";
            return false;
        }
        if (!NumberOf("KEY", word.substr(0, equals), &pair.first, error) ||
            !NumberOf("VALUE", word.substr(equals + 1), &pair.second, error)) {
            return false;
        }
        command->thermal.push_back(pair);
    }
    return true;
}

bool Operands(const std::vector<std::string>& words, Command* command, std::string* error)
{
    uint32_t word = 0;
    switch (command->verb) {
        case Verb::SCENE:
            command->pkg = words[0];
            command->scene = words[1];
            return NumberOf("STATE", words[2], &command->state, error);
        case Verb::RESOLUTION:
            if (!NumberOf("MODE", words[0], &word, error)) {
                return false;
            }
            command->mode = static_cast<int32_t>(word);
            if (!NumberOf("FLAG", words[1], &word, error)) {
                return false;
            }
            command->flag = static_cast<int32_t>(word);
            return true;
        case Verb::THERMAL:
            return ThermalPairs(words, command, error);
        case Verb::GAMEFPS:
            command->pkg = words[0];
            return NumberOf("FPS", words[1], &command->fps, error);
        case Verb::LISTEN:
            if (!words.empty()) {
                command->callbackName = words[0];
            }
            return !command->as.empty() || (*error = "listen needs --as BUNDLE", false);
        default:
            return true;
    }
}

// Options anywhere after the subcommand; false with the error for an unknown or incomplete one.
bool Options(const std::vector<std::string>& args, size_t from, Command* command, std::vector<std::string>* words,
             std::string* error)
{
    uint32_t ignored = 0;
    for (size_t i = from; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--dir" || arg == "--as") {
            if (i + 1 == args.size() || args[i + 1].empty()) {
                *error = arg + " needs a value";
                return false;
            }
            (arg == "--dir" ? command->runDir : command->as) = args[++i];
        } else if (arg == "--json" && command->verb == Verb::DUMP) {
            command->json = true;
        } else if (arg.size() > 1 && arg[0] == '-' && !Number(arg, &ignored)) {
            *error = "unknown option '" + arg + "'";
            return false;
        } else {
            words->push_back(arg);
        }
    }
    return true;
}
}  // namespace

std::string Usage(const std::string& topic)
{
    auto found = Table().find(topic);
    if (found != Table().end()) {
        return std::string("usage: zelctl [--dir RUNDIR] ") + found->second.usage + "\n";
    }
    std::string text = "usage: zelctl [--dir RUNDIR] COMMAND ARG...   (zelctl COMMAND --help for one)\n";
    for (const auto& [name, verb] : Table()) {
        text += "  " + std::string(verb.usage) + "\n";
    }
    text += "CALLER: system, native, shell or an installed bundle. RUNDIR: where zel_device serves.\n";
    text += "Exit: 0 done, 1 refused, 2 usage error, 3 no device serving in RUNDIR.\n";
    return text;
}

bool ParseArgs(const std::vector<std::string>& args, Command* command, std::string* error)
{
    size_t at = 0;
    for (; at < args.size() && args[at] == "--dir"; at += 2) {
        if (at + 1 == args.size()) {
            *error = "--dir needs a value";
            return false;
        }
        command->runDir = args[at + 1];
    }
    for (const std::string& arg : args) {
        if (arg == "--help" || arg == "-h") {
            command->verb = Verb::HELP;
            command->topic = at < args.size() && Table().contains(args[at]) ? args[at] : "";
            return true;
        }
    }
    if (at == args.size()) {
        *error = "a command is needed";
        return false;
    }
    auto found = Table().find(args[at]);
    if (found == Table().end()) {
        *error = "unknown command '" + args[at] + "'";
        return false;
    }
    command->verb = found->second.verb;
    command->topic = found->first;
    std::vector<std::string> words;
    if (!Options(args, at + 1, command, &words, error)) {
        return false;
    }
    if (words.size() < found->second.minWords || words.size() > found->second.maxWords) {
        *error = "wrong number of arguments";
        return false;
    }
    return Operands(words, command, error);
}

}  // namespace Tarvo::Zelctl
