#ifndef ZEL_DEVICE_SCENARIO_WORDS_H
#define ZEL_DEVICE_SCENARIO_WORDS_H

// Splitting a scenario line into words.
//
// Contract: blanks (space, tab) separate words; a double quote opens a quoted run that keeps
// blanks, '#' and '=' literally, up to the next double quote (a quoted run may start mid-word, as
// in msg="a b"); "" alone is an empty word; '#' outside quotes starts a comment that runs to the
// end of the line. There is no escape character, so a word cannot contain a double quote.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input_text.h"

namespace Tarvo::Emu {

struct ScenarioWord {
    std::string text;  // without the quotes
    // Position in text of the first '=' written outside quotes: a KEY=VALUE option has one.
    std::optional<size_t> equals;
};

// False (with a message) on an unterminated quote; words then holds nothing useful.
bool SplitScenarioWords(std::string_view line, std::vector<ScenarioWord>* words, std::string* error);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_SCENARIO_WORDS_H
