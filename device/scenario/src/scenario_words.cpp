#include "scenario_words.h"

#include <cstdint>

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

namespace {
// Length of the UTF-8 sequence that starts with lead, or 0 if lead cannot start one.
size_t SequenceLength(unsigned char lead)
{
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        return 4;
    }
    return 0;
}
}  // namespace

bool IsValidUtf8(std::string_view text)
{
    size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const size_t length = SequenceLength(lead);
        if (length == 0 || i + length > text.size()) {
            return false;
        }
        uint32_t code = length == 1 ? lead : (lead & (0xFF >> (length + 1)));
        for (size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) {
                return false;
            }
            code = (code << 6) | (next & 0x3F);
        }
        // Overlong forms, surrogates and code points past U+10FFFF.
        const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        if (overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) {
            return false;
        }
        i += length;
    }
    return true;
}

}  // namespace Tarvo::Emu
