#ifndef ZEL_DEVICE_INPUT_TEXT_H
#define ZEL_DEVICE_INPUT_TEXT_H

// Text that comes from outside (scenario files, command lines): UTF-8 checks and conversions, and
// the safe form in which messages quote it back.

#include <cstddef>
#include <string>
#include <string_view>

namespace Tarvo::Emu {

// How many characters of an input a message quotes before "...".
constexpr size_t kShownChars = 64;

// The length (1 to 4) of the valid UTF-8 sequence starting at text[at], and its code point; 0 if no
// valid sequence starts there (stray byte, truncated, overlong, surrogate, past U+10FFFF).
size_t DecodeUtf8(std::string_view text, size_t at, char32_t* code);
bool IsValidUtf8(std::string_view text);
// Invalid sequences become U+FFFD.
std::u16string Utf8ToUtf16(std::string_view text);

// Input as a message quotes it: control bytes, C1 controls and invalid bytes as \xNN, a backslash
// as \\, and at most `limit` characters, followed by "..." when more were left out.
std::string Shown(std::string_view text, size_t limit = kShownChars);

}  // namespace Tarvo::Emu

#endif  // ZEL_DEVICE_INPUT_TEXT_H
