#ifndef ZEL_DEVICE_SCENARIO_PARSER_H
#define ZEL_DEVICE_SCENARIO_PARSER_H

// Reads a scenario file (the language of zel_device) into a Scenario.
//
// Contract:
//  - Every error is reported, as "FILE:LINE: message" in line order, and a scenario with errors
//    must not be played. A line with a bad time still counts for the checks of later lines.
//  - Checks are static: times never decrease; set-up commands (config, param, settings.set) only
//    before boot; requests to the service only after it; nothing after end; a bundle named as a
//    caller, or as an application whose process is needed, is installed at that point of the file
//    (the device's default packages, or an earlier pkg.install not undone by a pkg.remove).
//  - A line's TIME may be left out (the line then starts with its command): it runs at the time of
//    the line before it, as with +0.
//  - config FILE is resolved against the scenario's folder and must exist.

#include <string>
#include <string_view>
#include <vector>

#include "scenario.h"

namespace Tarvo::Emu {

struct ParseResult {
    Scenario scenario;
    std::vector<std::string> errors;

    bool Ok() const { return errors.empty(); }
};

class ScenarioParser {
public:
    // file names the scenario in messages; config files are looked up in baseDir.
    static ParseResult Parse(std::string_view text, const std::string& file, const std::string& baseDir);
    // Reads path; an unreadable file is an error of the result.
    static ParseResult ParseFile(const std::string& path);
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SCENARIO_PARSER_H
