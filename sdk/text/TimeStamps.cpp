#include "sdk/text/TimeStamps.h"

#include <cstdint>
#include <cstdio>

namespace cadex::text {
namespace {

struct Moment
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// NOTE: days since 1970-01-01 of a date of the Gregorian calendar by H. Hinnant, "chrono-compatible low-level
// date algorithms", days_from_civil.
std::int64_t DaysFromCivil(std::int64_t year, int month, int day)
{
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

std::optional<time_t> ToSeconds(const Moment& t)
{
    if (t.year < 1 || t.month < 1 || t.month > 12 || t.day < 1 || t.day > 31 || t.hour < 0 || t.hour > 24 ||
        t.minute < 0 || t.minute > 59 || t.second < 0 || t.second > 60) {
        return std::nullopt;
    }
    return static_cast<time_t>(DaysFromCivil(t.year, t.month, t.day) * 86400 + t.hour * 3600 + t.minute * 60 +
                               t.second);
}

} // namespace

std::optional<time_t> ParseIsoTime(const std::string& stamp)
{
    Moment t;
    int length = 0;
    if (std::sscanf(stamp.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &t.year, &t.month, &t.day, &t.hour, &t.minute,
                    &t.second, &length) != 6) {
        return std::nullopt;
    }
    std::optional<time_t> time = ToSeconds(t);
    const std::string zone = stamp.substr(static_cast<std::size_t>(length));
    if (time && !zone.empty() && (zone[0] == '+' || zone[0] == '-')) {
        int hours = 0;
        int minutes = 0;
        if (std::sscanf(zone.c_str() + 1, "%2d:%2d", &hours, &minutes) < 1) {
            return std::nullopt;
        }
        const int offset = hours * 3600 + minutes * 60;
        *time += zone[0] == '-' ? offset : -offset;
    }
    return time;
}

std::optional<time_t> ParseIgesTime(const std::string& stamp)
{
    Moment t;
    const bool fourDigits = stamp.find('.') == 8;
    if (std::sscanf(stamp.c_str(), fourDigits ? "%4d%2d%2d.%2d%2d%2d" : "%2d%2d%2d.%2d%2d%2d", &t.year,
                    &t.month, &t.day, &t.hour, &t.minute, &t.second) != 6) {
        return std::nullopt;
    }
    if (!fourDigits) {
        t.year += t.year < 70 ? 2000 : 1900;
    }
    return ToSeconds(t);
}

} // namespace cadex::text
