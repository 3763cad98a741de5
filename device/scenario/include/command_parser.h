#ifndef ZEL_DEVICE_COMMAND_PARSER_H
#define ZEL_DEVICE_COMMAND_PARSER_H

// Turns one command's words into a ScenarioCommand. It follows the file line by line, keeping
// what the lines so far have done to the device (booted, installed packages and their uids, ended)
// for the checks that depend on it; a line with an error changes none of that.

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "command_args.h"
#include "package_catalog.h"
#include "scenario_command.h"
#include "scenario_words.h"

namespace Tarvo::Emu {

class CommandParser {
public:
    explicit CommandParser(std::string baseDir);

    // words[0] is the command name. False with a message (without FILE:LINE).
    bool Parse(const std::vector<ScenarioWord>& words, ScenarioCommand* command, std::string* error);
    bool Ended() const { return ended_; }

private:
    using Handler = std::function<bool(const CommandArgs&, ScenarioCommand*, std::string*)>;

    void AddSetUp();
    void AddDeviceState();
    void AddRequests();
    void AddEvents();
    void AddChecks();

    bool SetUpAllowed(const CommandArgs& args, std::string* error) const;
    bool RequestAllowed(const CommandArgs& args, std::string* error) const;
    bool Installed(const CommandArgs& args, const std::string& bundle, std::string* error) const;
    bool Caller(const CommandArgs& args, CallerSpec::Kind byDefault, CallerSpec* caller, std::string* error) const;

    bool ParseConfig(const CommandArgs& args, ScenarioCommand* command, std::string* error);
    bool ParseInstall(const CommandArgs& args, ScenarioCommand* command, std::string* error);
    bool ParseScene(const CommandArgs& args, ScenarioCommand* command, std::string* error) const;
    bool ParseResolution(const CommandArgs& args, ScenarioCommand* command, std::string* error) const;
    bool ParseThermal(const CommandArgs& args, ScenarioCommand* command, std::string* error) const;
    bool ParseGameFps(const CommandArgs& args, ScenarioCommand* command, std::string* error) const;
    bool ParseRaw(const CommandArgs& args, ScenarioCommand* command, std::string* error) const;
    bool ParseRawTarget(const CommandArgs& args, RawRequest* request, std::string* error) const;
    bool ParseAppState(const CommandArgs& args, std::optional<int32_t> state, ScenarioCommand* command,
                       std::string* error) const;
    bool ParseEvent(const CommandArgs& args, ScenarioCommand* command, std::string* error) const;
    bool ParseExpect(const CommandArgs& args, bool none, ScenarioCommand* command, std::string* error) const;

    std::string baseDir_;
    std::map<std::string, Handler> handlers_;
    std::map<std::string, int64_t> installed_;                 // bundle -> uid, as the catalogue will number it
    std::set<std::pair<std::string, std::string>> callbacks_;  // made by register lines: bundle, name
    int64_t nextUid_ = PackageCatalog::FIRST_UID;
    bool booted_ = false;
    bool configSeen_ = false;
    bool ended_ = false;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_COMMAND_PARSER_H
