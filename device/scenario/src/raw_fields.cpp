#include "raw_fields.h"

#include <algorithm>

#include "input_text.h"

namespace Tarvo::Emu {
namespace {
int HexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

bool Fail(const CommandArgs& args, const std::string& message, std::string* error)
{
    *error = args.Command() + ": " + message;
    return false;
}

bool ParseHex(const CommandArgs& args, const std::string& digits, std::string* bytes, std::string* error)
{
    if (digits.size() % 2 != 0 || digits.size() / 2 > kMaxRawBytes) {
        return Fail(args, "hex: needs an even number of digits, for at most " + std::to_string(kMaxRawBytes) + " bytes",
                    error);
    }
    bytes->reserve(digits.size() / 2);
    for (size_t i = 0; i < digits.size(); i += 2) {
        const int high = HexDigit(digits[i]);
        const int low = HexDigit(digits[i + 1]);
        if (high < 0 || low < 0) {
            return Fail(args, "hex: '" + Shown(digits.substr(i, 2)) + "' is not two hex digits", error);
        }
        bytes->push_back(static_cast<char>(high * 16 + low));
    }
    return true;
}

bool ParseVector(const CommandArgs& args, const std::string& list, std::vector<uint32_t>* words, std::string* error)
{
    if (list.empty()) {
        return true;
    }
    const size_t count = static_cast<size_t>(std::count(list.begin(), list.end(), ',')) + 1;
    if (count > kMaxRawElements) {
        return Fail(args,
                    "a vector of " + std::to_string(count) + " elements; at most " + std::to_string(kMaxRawElements),
                    error);
    }
    words->reserve(count);
    for (size_t start = 0; start <= list.size();) {
        const size_t comma = std::min(list.find(',', start), list.size());
        uint32_t word = 0;
        if (!args.Wire32(list.substr(start, comma - start), "element", &word, error)) {
            return false;
        }
        words->push_back(word);
        start = comma + 1;
    }
    return true;
}
}  // namespace

bool ParseRawField(const CommandArgs& args, const std::string& word, RawField* field, std::string* error)
{
    const size_t colon = word.find(':');
    const std::string kind = word.substr(0, colon);
    const std::string value = colon == std::string::npos ? std::string() : word.substr(colon + 1);
    using Kind = RawField::Kind;
    uint32_t number = 0;
    if (colon == std::string::npos) {
        return Fail(args, "'" + Shown(word) + "' is neither oneway nor a field KIND:VALUE", error);
    }
    if (kind == "s") {
        *field = RawField{Kind::STRING, value, {}};
        return value.size() <= kMaxRawBytes ||
               Fail(args, "s: a text of at most " + std::to_string(kMaxRawBytes) + " bytes", error);
    }
    if (kind == "i" || kind == "u") {
        if (!args.Wire32(value, kind + ":", &number, error)) {
            return false;
        }
        *field = RawField{kind == "i" ? Kind::INT32 : Kind::UINT32, {}, {number}};
        return true;
    }
    if (kind == "b") {
        *field = RawField{Kind::BOOL, {}, {value == "1" ? 1u : 0u}};
        return value == "0" || value == "1" || Fail(args, "b: takes 0 or 1, not '" + Shown(value) + "'", error);
    }
    if (kind == "i32v" || kind == "u32v") {
        *field = RawField{kind == "i32v" ? Kind::INT32_VECTOR : Kind::UINT32_VECTOR, {}, {}};
        return ParseVector(args, value, &field->words, error);
    }
    if (kind == "hex") {
        *field = RawField{Kind::BYTES, {}, {}};
        return ParseHex(args, value, &field->text, error);
    }
    return Fail(args, "unknown field kind '" + Shown(kind) + "' (s, i, u, b, i32v, u32v, hex)", error);
}

}  // namespace Tarvo::Emu
