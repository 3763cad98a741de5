#ifndef ZEL_DEVICE_COMMAND_ARGS_H
#define ZEL_DEVICE_COMMAND_ARGS_H

// The words of one scenario command after its name, sorted into positional words and KEY=VALUE
// options (in line order), with the checks every command shares. Each check returns false with a
// message naming the command.

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "scenario_words.h"

namespace Tarvo::Emu {

class CommandArgs {
public:
    using Option = std::pair<std::string, std::string>;

    CommandArgs(std::string command, const std::vector<ScenarioWord>& words);

    const std::string& Command() const { return command_; }
    const std::vector<std::string>& Positional() const { return positional_; }
    const std::vector<Option>& Options() const { return options_; }

    // Between min and max positional words; usage is shown on failure.
    bool Count(size_t min, size_t max, std::string_view usage, std::string* error) const;
    // Every option is one of allowed and none is repeated (unless repeats is true); no empty keys.
    bool OnlyOptions(std::initializer_list<std::string_view> allowed, std::string* error, bool repeats = false) const;
    std::optional<std::string> Find(std::string_view key) const;

    // Sent as given: any decimal in the 64-bit range, truncated to 32 bits.
    bool Wire32(const std::string& text, std::string_view what, uint32_t* value, std::string* error) const;
    // A decimal within [min, max].
    bool Ranged(const std::string& text, std::string_view what, int64_t min, int64_t max, int64_t* value,
                std::string* error) const;
    // 0|1, on|off, true|false.
    bool Flag(const std::string& text, std::string_view what, bool* value, std::string* error) const;

private:
    bool Fail(std::string message, std::string* error) const;

    std::string command_;
    std::vector<std::string> positional_;
    std::vector<Option> options_;
    bool emptyKey_ = false;
};

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_COMMAND_ARGS_H
