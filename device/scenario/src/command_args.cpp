#include "command_args.h"

#include <algorithm>

#include "decimal.h"
#include "input_text.h"

namespace Tarvo::Emu {

CommandArgs::CommandArgs(std::string command, const std::vector<ScenarioWord>& words) : command_(std::move(command))
{
    for (const auto& word : words) {
        if (!word.equals) {
            positional_.push_back(word.text);
            continue;
        }
        const size_t at = *word.equals;
        emptyKey_ = emptyKey_ || at == 0;
        options_.emplace_back(word.text.substr(0, at), word.text.substr(at + 1));
    }
}

bool CommandArgs::Fail(std::string message, std::string* error) const
{
    *error = command_ + ": " + std::move(message);
    return false;
}

bool CommandArgs::Count(size_t min, size_t max, std::string_view usage, std::string* error) const
{
    if (positional_.size() >= min && positional_.size() <= max) {
        return true;
    }
    const char* what = positional_.size() < min ? "too few arguments" : "too many arguments";
    return Fail(std::string(what) + " (usage: " + std::string(usage) + ")", error);
}

bool CommandArgs::OnlyOptions(std::initializer_list<std::string_view> allowed, std::string* error, bool repeats) const
{
    if (emptyKey_) {
        return Fail("an option needs a name before '='", error);
    }
    for (size_t i = 0; i < options_.size(); ++i) {
        const std::string& key = options_[i].first;
        if (std::find(allowed.begin(), allowed.end(), key) == allowed.end()) {
            std::string known;
            for (const auto& name : allowed) {
                known += (known.empty() ? "" : ", ") + std::string(name) + "=";
            }
            return Fail("unknown option '" + Shown(key) + "'" +
                            (known.empty() ? " (it takes none)" : " (known: " + known + ")"),
                        error);
        }
        for (size_t k = 0; k < i && !repeats; ++k) {
            if (options_[k].first == key) {
                return Fail("option '" + Shown(key) + "' given twice", error);
            }
        }
    }
    return true;
}

std::optional<std::string> CommandArgs::Find(std::string_view key) const
{
    for (const auto& [name, value] : options_) {
        if (name == key) {
            return value;
        }
    }
    return std::nullopt;
}

bool CommandArgs::Wire32(const std::string& text, std::string_view what, uint32_t* value, std::string* error) const
{
    int64_t parsed = 0;
    if (!ParseDecimal(text, &parsed)) {
        return Fail(std::string(what) + " '" + Shown(text) + "' is not a decimal integer within 64 bits", error);
    }
    *value = LowBits(parsed);
    return true;
}

bool CommandArgs::Ranged(const std::string& text, std::string_view what, int64_t min, int64_t max, int64_t* value,
                         std::string* error) const
{
    int64_t parsed = 0;
    if (!ParseDecimal(text, &parsed) || parsed < min || parsed > max) {
        return Fail(std::string(what) + " '" + Shown(text) + "' is not a decimal integer from " + std::to_string(min) +
                        " to " + std::to_string(max),
                    error);
    }
    *value = parsed;
    return true;
}

bool CommandArgs::Flag(const std::string& text, std::string_view what, bool* value, std::string* error) const
{
    if (text == "1" || text == "on" || text == "true") {
        *value = true;
        return true;
    }
    if (text == "0" || text == "off" || text == "false") {
        *value = false;
        return true;
    }
    return Fail(std::string(what) + " '" + Shown(text) + "' is not one of 0|1, on|off, true|false", error);
}

}  // namespace Tarvo::Emu
