#include "json_pointer.h"

#include <cstring>
#include <vector>

namespace Tarvo::Emu {
namespace {
constexpr int MAX_DEPTH = 64;

class Scanner {
public:
    explicit Scanner(const std::string& text) : text_(text) {}

    size_t pos = 0;

    void Blank()
    {
        while (pos < text_.size() && std::strchr(" \t\r\n", text_[pos]) != nullptr && text_[pos] != '\0') {
            ++pos;
        }
    }
    bool Take(char c)
    {
        Blank();
        if (pos < text_.size() && text_[pos] == c) {
            ++pos;
            return true;
        }
        return false;
    }
    char Peek()
    {
        Blank();
        return pos < text_.size() ? text_[pos] : '\0';
    }
    bool Hex4(char* out);
    bool String(std::string* out);
    bool Value(int depth);
    bool Members(int depth);
    bool Elements(int depth);

private:
    const std::string& text_;
};

bool Scanner::Hex4(char* out)
{
    if (pos + 4 > text_.size()) {
        return false;
    }
    unsigned value = 0;
    for (size_t i = 0; i < 4; ++i) {
        const char digit = text_[pos++];
        const char* hex = "0123456789abcdef";
        const char* found = std::strchr(hex, digit | 0x20);
        if (found == nullptr || digit == '\0') {
            return false;
        }
        value = value * 16 + static_cast<unsigned>(found - hex);
    }
    *out = static_cast<char>(value & 0x7f);
    return true;
}

// Escapes other than \uXXXX keep their meaning; \uXXXX is kept only below 0x80, as the dump writes.
bool Scanner::String(std::string* out)
{
    if (!Take('"')) {
        return false;
    }
    while (pos < text_.size() && text_[pos] != '"') {
        char c = text_[pos++];
        if (c == '\\' && pos < text_.size()) {
            char escaped = text_[pos++];
            if (escaped == 'u') {
                if (!Hex4(&c)) {
                    return false;
                }
            } else {
                const char* from = "nrtbf";
                const char* to = "\n\r\t\b\f";
                const char* found = std::strchr(from, escaped);
                c = found != nullptr && escaped != '\0' ? to[found - from] : escaped;
            }
        }
        out->push_back(c);
    }
    return Take('"');
}

bool Scanner::Members(int depth)
{
    if (Take('}')) {
        return true;
    }
    do {
        std::string name;
        if (!String(&name) || !Take(':') || !Value(depth)) {
            return false;
        }
    } while (Take(','));
    return Take('}');
}

bool Scanner::Elements(int depth)
{
    if (Take(']')) {
        return true;
    }
    do {
        if (!Value(depth)) {
            return false;
        }
    } while (Take(','));
    return Take(']');
}

bool Scanner::Value(int depth)
{
    if (depth > MAX_DEPTH) {
        return false;
    }
    const char first = Peek();
    if (first == '{') {
        return Take('{') && Members(depth + 1);
    }
    if (first == '[') {
        return Take('[') && Elements(depth + 1);
    }
    if (first == '"') {
        std::string ignored;
        return String(&ignored);
    }
    const size_t start = pos;
    while (pos < text_.size() && std::strchr("-+.eE0123456789truefalsn", text_[pos]) != nullptr && text_[pos] != '\0') {
        ++pos;
    }
    // A literal, or something shaped like a number.
    const std::string token = text_.substr(start, pos - start);
    const bool number = !token.empty() && (token[0] == '-' || (token[0] >= '0' && token[0] <= '9')) &&
                        token.find_first_of("trufalsn") == std::string::npos;
    return number || token == "true" || token == "false" || token == "null";
}

std::vector<std::string> Split(const std::string& pointer)
{
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t slash = pointer.find('/'); slash != std::string::npos; slash = pointer.find('/', start)) {
        parts.push_back(pointer.substr(start, slash - start));
        start = slash + 1;
    }
    parts.push_back(pointer.substr(start));
    return parts;
}

// Leaves the scanner at the member named `part`, or at the element it numbers.
bool Step(Scanner& scanner, const std::string& part)
{
    if (scanner.Take('{')) {
        do {
            std::string name;
            if (!scanner.String(&name) || !scanner.Take(':')) {
                return false;
            }
            if (name == part) {
                return true;
            }
        } while (scanner.Value(0) && scanner.Take(','));
        return false;
    }
    if (!scanner.Take('[') || part.empty() || part.find_first_not_of("0123456789") != std::string::npos ||
        part.size() > 6) {
        return false;
    }
    for (int skip = std::stoi(part); skip > 0; --skip) {
        if (!scanner.Value(0) || !scanner.Take(',')) {
            return false;
        }
    }
    return scanner.Peek() != ']';
}

TraceValue Scalar(const std::string& text, Scanner& scanner)
{
    std::string decoded;
    if (scanner.Peek() == '"') {
        scanner.String(&decoded);
        return decoded;
    }
    const size_t start = scanner.pos;
    scanner.Value(0);
    return text.substr(start, scanner.pos - start);
}

// An array of scalars as the list of their texts; anything nested stays JSON.
TraceValue Found(const std::string& text, Scanner& scanner)
{
    const char first = scanner.Peek();
    const size_t start = scanner.pos;
    if (first != '{' && first != '[') {
        return Scalar(text, scanner);
    }
    if (scanner.Take('[')) {
        std::vector<std::string> items;
        bool flat = true;
        if (!scanner.Take(']')) {
            do {
                flat = scanner.Peek() != '{' && scanner.Peek() != '[';
                if (flat) {
                    items.push_back(ValueText(Scalar(text, scanner)));
                }
            } while (flat && scanner.Take(','));
            flat = flat && scanner.Take(']');
        }
        if (flat) {
            return items;
        }
    }
    scanner.pos = start;
    scanner.Value(0);
    return TraceObject{text.substr(start, scanner.pos - start)};
}
}  // namespace

bool IsJsonObject(const std::string& text)
{
    Scanner scanner(text);
    if (scanner.Peek() != '{' || !scanner.Value(0)) {
        return false;
    }
    scanner.Blank();
    return scanner.pos == text.size();
}

std::optional<TraceValue> JsonAt(const std::string& text, const std::string& pointer)
{
    if (!IsJsonObject(text)) {
        return std::nullopt;
    }
    Scanner scanner(text);
    for (const auto& part : Split(pointer)) {
        if (!Step(scanner, part)) {
            return std::nullopt;
        }
    }
    return Found(text, scanner);
}

}  // namespace Tarvo::Emu
