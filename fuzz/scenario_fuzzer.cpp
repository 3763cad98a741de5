// The scenario parser as `zel_device check` runs it, over text of any content. Every error names
// the file and a line of it, in line order; what parses keeps its times in order and ends no
// earlier than its last line.
//
// Input: the scenario's text.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "fuzz_support.h"
#include "scenario_parser.h"

namespace Tarvo::Emu {
namespace {
constexpr const char* kFile = "fuzz.scn";

// Errors look like "fuzz.scn:LINE: message"; the line number, or 0 when there is none.
size_t LineOf(const std::string& error)
{
    std::string_view prefix = "fuzz.scn:";
    if (error.compare(0, prefix.size(), prefix) != 0) {
        return 0;
    }
    size_t end = error.find(": ", prefix.size());
    if (end == std::string::npos || end == prefix.size()) {
        return 0;
    }
    std::string digits = error.substr(prefix.size(), end - prefix.size());
    if (digits.find_first_not_of("0123456789") != std::string::npos || digits.size() > 9) {
        return 0;
    }
    return std::stoul(digits);
}

size_t CountLines(std::string_view text)
{
    size_t lines = 0;
    while (!text.empty()) {
        ++lines;
        size_t newline = text.find('\n');
        text.remove_prefix(newline == std::string_view::npos ? text.size() : newline + 1);
    }
    return lines;
}

void CheckResult(const ParseResult& result, std::string_view text)
{
    size_t lines = CountLines(text);
    size_t previous = 0;
    for (const std::string& error : result.errors) {
        size_t line = LineOf(error);
        FUZZ_REQUIRE(line >= 1 && line <= lines && line >= previous);
        previous = line;
    }
    int64_t time = 0;
    for (const ScenarioLine& line : result.scenario.lines) {
        FUZZ_REQUIRE(line.line >= 1 && static_cast<size_t>(line.line) <= lines && line.time >= time);
        time = line.time;
    }
    FUZZ_REQUIRE(result.scenario.endTime >= time);
}
}  // namespace
}  // namespace Tarvo::Emu

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Tarvo::Emu;
    // `config FILE` lines are looked up beside the scenario: the examples' folder has real ones.
    static const std::string baseDir = std::filesystem::path(ZEL_SOURCE_DIR "/examples/scenarios").string();
    std::string_view text(reinterpret_cast<const char*>(data), size);
    CheckResult(ScenarioParser::Parse(text, kFile, baseDir), text);
    return 0;
}
