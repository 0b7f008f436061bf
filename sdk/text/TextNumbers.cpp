#include "sdk/text/TextNumbers.h"

#include <cmath>
#include <cstdint>
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
constexpr std::uint64_t MaximalExactInteger = std::uint64_t(1) << 53;

// The general case, for what the fast path cannot round correctly.
bool ParseSlowly(std::string text, double& value)
{
    for (char& c : text) {
        if (c == 'D' || c == 'd') {
            c = 'E';
        }
    }
    const char* first = text.c_str() + (text.front() == '+' ? 1 : 0);
    double parsed = 0.0;
#if defined(__cpp_lib_to_chars)
    const char* last = text.c_str() + text.size();
    const auto [end, error] = std::from_chars(first, last, parsed);
    const bool whole = error == std::errc() && end == last;
#else
    // NOTE: a standard library without from_chars for reals; a stream with the classic locale rounds as well.
    std::istringstream stream{std::string(first)};
    stream.imbue(std::locale::classic());
    const bool whole =
        static_cast<bool>(stream >> parsed) && stream.peek() == std::istringstream::traits_type::eof();
#endif
    if (!whole || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

} // namespace

bool ParseReal(std::string_view text, double& value)
{
    // NOTE: W. D. Clinger, "How to read floating point numbers accurately" (1990): an integer below 2^53
    // times or divided by a power of ten up to 10^22 is one correctly rounded operation.
    const char* p = text.data();
    const char* const end = p + text.size();
    const bool negative = p < end && *p == '-';
    if (p < end && (*p == '-' || *p == '+')) {
        ++p;
    }
    std::uint64_t digits = 0;
    int scale = 0;
    int count = 0;
    int places = 0;
    bool point = false;
    for (; p < end && ((*p >= '0' && *p <= '9') || (*p == '.' && !point)); ++p) {
        if (*p == '.') {
            point = true;
            continue;
        }
        ++count;
        if (digits < MaximalExactInteger / 10) {
            digits = digits * 10 + static_cast<std::uint64_t>(*p - '0');
            places += point ? 1 : 0;
        } else if (*p != '0' || !point) {
            return ParseSlowly(std::string(text), value);
        }
    }
    if (count == 0) {
        return false;
    }
    if (p < end && (*p == 'E' || *p == 'e' || *p == 'D' || *p == 'd')) {
        ++p;
        const bool down = p < end && *p == '-';
        if (p < end && (*p == '-' || *p == '+')) {
            ++p;
        }
        if (p == end) {
            return false;
        }
        for (; p < end && *p >= '0' && *p <= '9' && scale < 10000; ++p) {
            scale = scale * 10 + (*p - '0');
        }
        scale = down ? -scale : scale;
    }
    if (p != end) {
        return false;
    }
    scale -= places;
    if (scale < -MaximalExactPower || scale > MaximalExactPower) {
        if (digits != 0) {
            return ParseSlowly(std::string(text), value);
        }
        scale = 0;
    }
    const double magnitude = scale < 0 ? static_cast<double>(digits) / PowersOfTen[-scale]
                                       : static_cast<double>(digits) * PowersOfTen[scale];
    value = negative ? -magnitude : magnitude;
    return true;
}

} // namespace cadex::text
