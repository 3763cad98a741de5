#include "scenario_parser.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "command_parser.h"
#include "decimal.h"
#include "scenario_words.h"

namespace Tarvo::Emu {
namespace {
// "2500" (absolute) or "+200" (after the previous line); never before the previous line.
bool ParseTime(const ScenarioWord& word, int64_t previous, int64_t* time, std::string* error)
{
    const bool relative = !word.text.empty() && word.text[0] == '+';
    const std::string digits = relative ? word.text.substr(1) : word.text;
    int64_t value = 0;
    if (word.equals || !ParseDecimal(digits, &value) || value < 0) {
        *error = "'" + Shown(word.text) + "' is not a time: a line starts with ms since power-on (2500) or since the " +
                 "previous line (+200)";
        return false;
    }
    const int64_t at = relative && value <= Scenario::kMaxTime ? previous + value : value;
    if (at > Scenario::kMaxTime) {
        *error = "time '" + Shown(word.text) + "' lies beyond one day (" + std::to_string(Scenario::kMaxTime) +
                 " ms), the longest a scenario runs";
        return false;
    }
    if (at < previous) {
        *error = "time goes back: " + std::to_string(at) + " ms is before the previous line's " +
                 std::to_string(previous) + " ms";
        return false;
    }
    *time = at;
    return true;
}

std::string Trimmed(std::string_view line)
{
    const size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    const size_t last = line.find_last_not_of(" \t\r");
    return std::string(line.substr(first, last - first + 1));
}

class LineReader {
public:
    LineReader(const std::string& file, const std::string& baseDir, ParseResult* result)
        : file_(file), commands_(baseDir), result_(result)
    {
    }

    void Read(int number, std::string_view line)
    {
        std::vector<ScenarioWord> words;
        std::string error;
        if (!IsValidUtf8(line)) {
            return Report(number, "the line is not valid UTF-8");
        }
        if (!SplitScenarioWords(line, &words, &error)) {
            return Report(number, error);
        }
        if (words.empty()) {
            return;
        }
        // A line that does not start like a number has no time: it runs at the previous line's.
        const char lead = words[0].text.empty() ? ' ' : words[0].text[0];
        const bool stamped = (lead >= '0' && lead <= '9') || lead == '+' || lead == '-';
        int64_t time = last_;
        const bool timed = !stamped || ParseTime(words[0], last_, &time, &error);
        if (!timed) {
            Report(number, error);
        } else {
            last_ = time;  // later lines are held to it even when this line's command is wrong
        }
        const size_t first = stamped ? 1 : 0;
        if (words.size() <= first) {
            return Report(number, "a command must follow the time");
        }
        ScenarioCommand command;
        if (!commands_.Parse(std::vector<ScenarioWord>(words.begin() + static_cast<std::ptrdiff_t>(first), words.end()),
                             &command, &error)) {
            return Report(number, error);
        }
        if (timed) {
            const bool ends = std::holds_alternative<Cmd::End>(command);
            result_->scenario.lines.push_back(ScenarioLine{number, time, Trimmed(line), std::move(command)});
            ended_ = ended_ || ends;
        }
    }

    void Finish()
    {
        Scenario& scenario = result_->scenario;
        const int64_t last = scenario.lines.empty() ? 0 : scenario.lines.back().time;
        scenario.endTime = ended_ ? last : last + Scenario::kDefaultTail;
        if (scenario.endTime > Scenario::kMaxTime) {
            Report(scenario.lines.back().line,
                   "the run would end at " + std::to_string(scenario.endTime) + " ms, " +
                       std::to_string(Scenario::kDefaultTail) + " ms after this line, beyond one day (" +
                       std::to_string(Scenario::kMaxTime) + " ms); end it with an end line");
        }
    }

private:
    void Report(int number, const std::string& message)
    {
        result_->errors.push_back(file_ + ":" + std::to_string(number) + ": " + message);
    }

    const std::string& file_;
    CommandParser commands_;
    ParseResult* result_;
    int64_t last_ = 0;
    bool ended_ = false;
};
}  // namespace

ParseResult ScenarioParser::Parse(std::string_view text, const std::string& file, const std::string& baseDir)
{
    ParseResult result;
    result.scenario.file = file;
    constexpr std::string_view bom = "\xEF\xBB\xBF";
    if (text.substr(0, bom.size()) == bom) {
        text.remove_prefix(bom.size());
    }
    LineReader reader(file, baseDir, &result);
    int number = 0;
    while (!text.empty()) {
        const size_t newline = text.find('\n');
        const std::string_view line = text.substr(0, newline);
        reader.Read(++number, line);
        text.remove_prefix(newline == std::string_view::npos ? text.size() : newline + 1);
    }
    reader.Finish();
    return result;
}

ParseResult ScenarioParser::ParseFile(const std::string& path)
{
    std::error_code ec;
    std::ifstream in;
    if (std::filesystem::is_regular_file(path, ec)) {
        in.open(path, std::ios::binary);
    }
    std::stringstream content;
    if (in.is_open()) {
        content << in.rdbuf();
    }
    if (!in.is_open() || in.bad()) {
        ParseResult result;
        result.scenario.file = path;
        result.errors.push_back(path + ": cannot read the scenario");
        return result;
    }
    std::string baseDir = std::filesystem::path(path).parent_path().string();
    return Parse(content.str(), path, baseDir.empty() ? "." : baseDir);
}

}  // namespace Tarvo::Emu
