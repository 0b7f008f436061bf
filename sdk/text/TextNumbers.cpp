#include "sdk/text/TextNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <version>

#if defined(__cpp_lib_to_chars)
#include <charconv>
#endif

namespace cadex::text {
namespace {

constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int MaximalExactPower = 22;
constexpr int MaximalExactDigits = 15;
// More digits than these do not fit into 64 bits.
constexpr int MaximalDigits = 18;
// Larger exponents than any number has, small enough not to overflow.
constexpr int HugeExponent = 100000;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The general case, for what the fast path cannot round correctly. False when the number is too large; too
// small ones are zero.
bool ReadSlowly(const char* first, const char* last, int magnitude, double& value)
{
    double parsed = 0;
#if defined(__cpp_lib_to_chars)
    const bool isFortran = std::find_if(first, last, [](char c) { return c == 'D' || c == 'd'; }) != last;
    std::string copy;
    if (isFortran) {
        copy.assign(first, last);
        std::replace_if(
            copy.begin(), copy.end(), [](char c) { return c == 'D' || c == 'd'; }, 'E');
        first = copy.data();
        last = first + copy.size();
    }
    const bool isInRange = std::from_chars(first, last, parsed).ec == std::errc();
#else
    // NOTE: a standard library without from_chars for reals; a stream with the classic locale rounds as well.
    std::string copy(first, last);
    std::replace_if(
        copy.begin(), copy.end(), [](char c) { return c == 'D' || c == 'd'; }, 'E');
    std::istringstream stream(copy);
    stream.imbue(std::locale::classic());
    const bool isInRange = static_cast<bool>(stream >> parsed);
#endif
    if (!isInRange && magnitude > 0) {
        return false;
    }
    value = isInRange ? parsed : 0;
    return std::isfinite(value);
}

} // namespace

const char* ReadReal(const char* first, const char* last, double& value)
{
    // NOTE: W. D. Clinger, "How to read floating point numbers accurately" (1990): an integer below 2^53
    // times or divided by a power of ten up to 10^22 is one correctly rounded operation.
    const char* p = first;
    const bool isNegative = p < last && *p == '-';
    if (p < last && (*p == '-' || *p == '+')) {
        ++p;
    }
    const char* const start = p;
    std::uint64_t mantissa = 0;
    int digits = 0; // of the mantissa, leading zeros left aside
    int scale = 0;
    bool hasDigits = false;
    bool hasPoint = false;
    for (; p < last && (IsDigit(*p) || (*p == '.' && !hasPoint)); ++p) {
        if (*p == '.') {
            hasPoint = true;
            continue;
        }
        hasDigits = true;
        if (digits < MaximalDigits) {
            mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
            digits += mantissa != 0 ? 1 : 0;
            scale -= hasPoint ? 1 : 0;
        } else {
            ++digits;
            scale += hasPoint ? 0 : 1;
        }
    }
    if (!hasDigits) {
        return first;
    }
    if (p < last && (*p == 'E' || *p == 'e' || *p == 'D' || *p == 'd')) {
        const char* exponent = p + 1;
        const bool isDown = exponent < last && *exponent == '-';
        if (exponent < last && (*exponent == '-' || *exponent == '+')) {
            ++exponent;
        }
        if (exponent < last && IsDigit(*exponent)) {
            int given = 0;
            for (; exponent < last && IsDigit(*exponent); ++exponent) {
                given = std::min(given * 10 + (*exponent - '0'), HugeExponent);
            }
            scale += isDown ? -given : given;
            p = exponent;
        }
    }
    // Zeros at the end of a fraction are no digits that count.
    while (digits > MaximalExactDigits && digits <= MaximalDigits && mantissa % 10 == 0) {
        mantissa /= 10;
        --digits;
        ++scale;
    }
    double magnitude = 0;
    if (digits <= MaximalExactDigits && scale >= -MaximalExactPower && scale <= MaximalExactPower) {
        magnitude = scale < 0 ? static_cast<double>(mantissa) / PowersOfTen[-scale]
                              : static_cast<double>(mantissa) * PowersOfTen[scale];
    } else if (mantissa != 0 && !ReadSlowly(start, p, digits + scale, magnitude)) {
        return first;
    }
    value = isNegative ? -magnitude : magnitude;
    return p;
}

bool ParseReal(std::string_view text, double& value)
{
    double read = 0;
    const char* const end = text.data() + text.size();
    if (text.empty() || ReadReal(text.data(), end, read) != end) {
        return false;
    }
    value = read;
    return true;
}

} // namespace cadex::text
