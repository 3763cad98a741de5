#ifndef TARVO_UTILS_JSON_TEXT_H
#define TARVO_UTILS_JSON_TEXT_H

#include <cstdio>
#include <string>

namespace Tarvo {

// `text` as a JSON string: quoted, with quotes, backslashes and control characters escaped; other
// bytes (UTF-8 included) as they are.
inline std::string JsonQuote(const std::string& text)
{
    std::string out = "\"";
    for (unsigned char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (c < 0x20) {
                    char escaped[8];
                    snprintf(escaped, sizeof(escaped), "\\u%04x", c);
                    out += escaped;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out + "\"";
}

}  // namespace Tarvo

#endif  // TARVO_UTILS_JSON_TEXT_H
