#include "decimal.h"

#include <charconv>

namespace Tarvo::Emu {

bool ParseDecimal(std::string_view text, int64_t* value)
{
    const size_t sign = (!text.empty() && text[0] == '-') ? 1 : 0;
    if (text.size() == sign) {
        return false;
    }
    int64_t parsed = 0;
    const char* end = text.data() + text.size();
    const auto [stop, code] = std::from_chars(text.data(), end, parsed, 10);
    if (code != std::errc() || stop != end) {
        return false;
    }
    *value = parsed;
    return true;
}

}  // namespace Tarvo::Emu
