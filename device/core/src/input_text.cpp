#include "input_text.h"

#include <cstdint>
#include <cstdio>

namespace Tarvo::Emu {
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

void AppendByteEscape(unsigned char byte, std::string* out)
{
    char escaped[8];
    snprintf(escaped, sizeof(escaped), "\\x%02x", byte);
    *out += escaped;
}
}  // namespace

size_t DecodeUtf8(std::string_view text, size_t at, char32_t* code)
{
    const auto lead = static_cast<unsigned char>(text[at]);
    const size_t length = SequenceLength(lead);
    if (length == 0 || at + length > text.size()) {
        return 0;
    }
    uint32_t value = length == 1 ? lead : (lead & (0xFF >> (length + 1)));
    for (size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[at + k]);
        if ((next & 0xC0) != 0x80) {
            return 0;
        }
        value = (value << 6) | (next & 0x3F);
    }
    const bool overlong = (length == 3 && value < 0x800) || (length == 4 && value < 0x10000);
    if (overlong || (value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF) {
        return 0;
    }
    *code = value;
    return length;
}

bool IsValidUtf8(std::string_view text)
{
    char32_t code = 0;
    for (size_t i = 0; i < text.size();) {
        const size_t length = DecodeUtf8(text, i, &code);
        if (length == 0) {
            return false;
        }
        i += length;
    }
    return true;
}

std::u16string Utf8ToUtf16(std::string_view text)
{
    std::u16string out;
    for (size_t i = 0; i < text.size();) {
        char32_t code = 0xFFFD;
        const size_t length = DecodeUtf8(text, i, &code);
        i += length == 0 ? 1 : length;
        if (code >= 0x10000) {
            out += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            out += static_cast<char16_t>(code);
        }
    }
    return out;
}

std::string Shown(std::string_view text, size_t limit)
{
    std::string out;
    size_t i = 0;
    for (size_t shown = 0; i < text.size() && shown < limit; ++shown) {
        char32_t code = 0;
        const size_t length = DecodeUtf8(text, i, &code);
        if (length > 1 && code >= 0xA0) {
            out.append(text.substr(i, length));
        } else if (length == 1 && code >= 0x20 && code < 0x7F) {
            out += code == '\\' ? "\\\\" : std::string(1, static_cast<char>(code));
        } else {
            // A control character (C0, DEL, C1) or an invalid byte: every byte as a number.
            for (size_t k = 0; k < (length == 0 ? 1 : length); ++k) {
                AppendByteEscape(static_cast<unsigned char>(text[i + k]), &out);
            }
        }
        i += length == 0 ? 1 : length;
    }
    return i < text.size() ? out + "..." : out;
}

}  // namespace Tarvo::Emu
