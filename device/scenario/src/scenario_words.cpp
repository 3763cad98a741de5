#include "scenario_words.h"

namespace Tarvo::Emu {

bool SplitScenarioWords(std::string_view line, std::vector<ScenarioWord>* words, std::string* error)
{
    words->clear();
    ScenarioWord word;
    bool inWord = false;
    bool quoted = false;
    for (char c : line) {
        if (quoted) {
            if (c == '"') {
                quoted = false;
            } else {
                word.text += c;
            }
            continue;
        }
        if (c == '#') {
            break;
        }
        if (c == ' ' || c == '\t' || c == '\r') {
            if (inWord) {
                words->push_back(std::move(word));
                word = ScenarioWord();
                inWord = false;
            }
            continue;
        }
        inWord = true;
        if (c == '"') {
            quoted = true;
            continue;
        }
        if (c == '=' && !word.equals) {
            word.equals = word.text.size();
        }
        word.text += c;
    }
    if (quoted) {
        *error = "unterminated double quote";
        return false;
    }
    if (inWord) {
        words->push_back(std::move(word));
    }
    return true;
}

}  // namespace Tarvo::Emu
