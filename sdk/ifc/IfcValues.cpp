// Part 21 values: lists, numbers, references, typed values and strings.
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

#include "sdk/ifc/IfcFile.h"

namespace cadex::ifc {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The end of the item that starts at the front of a list's content.
std::size_t ItemEnd(std::string_view text)
{
    std::size_t depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\'') {
            i = text.find('\'', i + 1);
            if (i == std::string_view::npos) {
                return text.size();
            }
        } else if (c == '(') {
            ++depth;
        } else if ((c == ')' || c == ',') && depth == 0) {
            return i;
        } else if (c == ')') {
            --depth;
        }
    }
    return text.size();
}

/// Decimal text to the nearest double, whatever the process's locale. Up to 15 digits with a small exponent
/// are one exact operation; the rest takes the library's way.
const char* ParseReal(const char* text, const char* end, double& value)
{
    static constexpr double Powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const char* at = text;
    const bool negative = at != end && *at == '-';
    at += at != end && (*at == '-' || *at == '+') ? 1 : 0;
    std::uint64_t mantissa = 0;
    int digits = 0;
    int exponent = 0;
    bool any = false;
    bool fraction = false;
    for (; at != end && (IsDigit(*at) || (*at == '.' && !fraction)); ++at) {
        if (*at == '.') {
            fraction = true;
            continue;
        }
        any = true;
        mantissa = digits < 18 ? mantissa * 10 + static_cast<std::uint64_t>(*at - '0') : mantissa;
        digits += mantissa != 0 ? 1 : 0;
        exponent -= fraction ? 1 : 0;
    }
    if (!any) {
        return text;
    }
    if (at != end && (*at == 'E' || *at == 'e')) {
        const char* power = at + 1;
        const bool down = power != end && *power == '-';
        power += power != end && (*power == '-' || *power == '+') ? 1 : 0;
        if (power != end && IsDigit(*power)) {
            int given = 0;
            for (; power != end && IsDigit(*power); ++power) {
                given = given < 10000 ? given * 10 + (*power - '0') : given;
            }
            exponent += down ? -given : given;
            at = power;
        }
    }
    if (digits <= 15 && exponent >= -22 && exponent <= 22) {
        const double exact = static_cast<double>(mantissa);
        value = exponent < 0 ? exact / Powers[-exponent] : exact * Powers[exponent];
    } else {
        std::istringstream stream(std::string(text + (negative ? 1 : 0), at));
        stream.imbue(std::locale::classic());
        stream >> value;
        if (stream.fail()) {
            // too small is zero; too large is no number
            value = exponent + digits < 0 ? 0 : std::numeric_limits<double>::quiet_NaN();
        }
    }
    value = negative ? -value : value;
    return at;
}

int HexDigit(char c)
{
    return IsDigit(c) ? c - '0'
                      : (c >= 'A' && c <= 'F' ? c - 'A' + 10 : (c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1));
}

bool ReadHex(std::string_view text, std::size_t digits, std::uint32_t& value)
{
    value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        const int digit = i < text.size() ? HexDigit(text[i]) : -1;
        if (digit < 0) {
            return false;
        }
        value = value << 4U | static_cast<std::uint32_t>(digit);
    }
    return true;
}

void AppendCharacter(std::vector<UTF16>& text, std::uint32_t code)
{
    if (code > 0x10FFFF) {
        code = 0xFFFD;
    }
    if (code >= 0x10000) {
        text.push_back(static_cast<UTF16>(0xD800 + ((code - 0x10000) >> 10U)));
        code = 0xDC00 + ((code - 0x10000) & 0x3FFU);
    }
    text.push_back(static_cast<UTF16>(code));
}

/// \X2\00FC00E4\X0\ and its wide form; returns what was used, 0 when it is none.
std::size_t ReadWideDirective(std::string_view text, std::vector<UTF16>& out)
{
    const std::size_t width = text.substr(0, 4) == "\\X2\\" ? 4 : (text.substr(0, 4) == "\\X4\\" ? 8 : 0);
    std::size_t at = 4;
    std::uint32_t code = 0;
    while (width != 0 && ReadHex(text.substr(std::min(at, text.size())), width, code)) {
        if (width == 4) {
            out.push_back(static_cast<UTF16>(code)); // surrogates come as pairs
        } else {
            AppendCharacter(out, code);
        }
        at += width;
    }
    if (width == 0) {
        return 0;
    }
    return text.substr(std::min(at, text.size()), 4) == "\\X0\\" ? at + 4 : at;
}

/// What a backslash starts; returns the length used. A backslash that starts nothing known stands for itself.
std::size_t ReadDirective(std::string_view text, std::vector<UTF16>& out)
{
    std::uint32_t code = 0;
    if (text.substr(0, 2) == "\\\\") {
        out.push_back('\\');
        return 2;
    }
    if (text.substr(0, 3) == "\\X\\" && ReadHex(text.substr(3), 2, code)) {
        out.push_back(static_cast<UTF16>(code));
        return 5;
    }
    if (text.substr(0, 3) == "\\S\\" && text.size() > 3) {
        out.push_back(static_cast<UTF16>((static_cast<unsigned char>(text[3]) & 0x7FU) + 0x80U));
        return 4;
    }
    if (text.size() > 3 && text[1] == 'P' && text[3] == '\\') {
        return 4; // the choice of an ISO 8859 page: only the first is known here
    }
    if (const std::size_t used = ReadWideDirective(text, out)) {
        return used;
    }
    out.push_back('\\');
    return 1;
}

} // namespace

ListReader::ListReader(std::string_view list)
{
    const std::size_t open = list.find('(');
    const std::size_t close = list.rfind(')');
    if (open != std::string_view::npos && close != std::string_view::npos && close > open) {
        myRest = list.substr(open + 1, close - open - 1);
    }
}

bool ListReader::Next(std::string_view& item)
{
    while (!myRest.empty() && (IsBlank(myRest.front()) || myRest.front() == ',')) {
        myRest.remove_prefix(1);
    }
    if (myRest.empty()) {
        return false;
    }
    const std::size_t end = ItemEnd(myRest);
    item = myRest.substr(0, end);
    myRest.remove_prefix(std::max<std::size_t>(end, 1));
    while (!item.empty() && IsBlank(item.back())) {
        item.remove_suffix(1);
    }
    return true;
}

void ReadNumbers(std::string_view list, std::vector<double>& numbers)
{
    const char* at = list.data();
    const char* end = at + list.size();
    while (at != end) {
        if (*at == '#' || *at == '\'') {
            return; // a list of numbers holds nothing else
        }
        double value = 0;
        const char* next = ParseReal(at, end, value);
        if (next == at) {
            ++at;
            continue;
        }
        numbers.push_back(value);
        at = next;
    }
}

bool ReadNumber(std::string_view text, double& value)
{
    const std::string_view bare = ReadTyped(text).value;
    return !bare.empty() && ParseReal(bare.data(), bare.data() + bare.size(), value) != bare.data() &&
           std::isfinite(value);
}

Id ReadReference(std::string_view text)
{
    if (text.size() < 2 || text.front() != '#') {
        return 0;
    }
    std::uint64_t id = 0;
    for (std::size_t i = 1; i < text.size() && IsDigit(text[i]) && id < (1ULL << 33U); ++i) {
        id = id * 10 + static_cast<std::uint64_t>(text[i] - '0');
    }
    return id > std::numeric_limits<Id>::max() ? 0 : static_cast<Id>(id);
}

TypedValue ReadTyped(std::string_view text)
{
    std::size_t nameEnd = 0;
    while (nameEnd < text.size() && ((text[nameEnd] >= 'A' && text[nameEnd] <= 'Z') ||
                                     (nameEnd > 0 && (IsDigit(text[nameEnd]) || text[nameEnd] == '_')))) {
        ++nameEnd;
    }
    std::size_t open = nameEnd;
    while (open < text.size() && IsBlank(text[open])) {
        ++open;
    }
    if (nameEnd == 0 || open >= text.size() || text[open] != '(' || text.back() != ')') {
        return {std::string_view(), text};
    }
    std::string_view value = text.substr(open + 1, text.size() - open - 2);
    while (!value.empty() && IsBlank(value.front())) {
        value.remove_prefix(1);
    }
    while (!value.empty() && IsBlank(value.back())) {
        value.remove_suffix(1);
    }
    return {text.substr(0, nameEnd), value};
}

Base_UTF16String ReadString(std::string_view quoted)
{
    if (quoted.size() < 2 || quoted.front() != '\'' || quoted.back() != '\'') {
        return {};
    }
    const std::string_view text = quoted.substr(1, quoted.size() - 2);
    std::vector<UTF16> out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == '\\') {
            i += ReadDirective(text.substr(i), out);
        } else if (c >= 0x80) {
            const std::size_t length = c >= 0xF0 ? 4 : (c >= 0xE0 ? 3 : (c >= 0xC2 ? 2 : 1));
            std::uint32_t code = length == 4 ? c & 7U : (length == 3 ? c & 15U : c & 31U);
            std::size_t used = 1;
            while (length > 1 && used < length && i + used < text.size() &&
                   (static_cast<unsigned char>(text[i + used]) & 0xC0U) == 0x80U) {
                code = code << 6U | (static_cast<unsigned char>(text[i + used]) & 0x3FU);
                ++used;
            }
            const bool valid = length > 1 && used == length && code <= 0x10FFFF;
            AppendCharacter(out, valid ? code : c);
            i += valid ? length : 1;
        } else {
            if (c >= 0x20) // line breaks inside a string only wrap it
            {
                out.push_back(c);
            }
            i += c == '\'' ? 2 : 1;
        }
    }
    return {out.data(), out.size()};
}

} // namespace cadex::ifc
