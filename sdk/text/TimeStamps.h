// Times as exchange files write them, as seconds since 1970-01-01 UTC.
#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace cadex::text {

/// 2004-06-01T12:00:00, perhaps with +hh:mm, -hh:mm or Z behind it; universal time when no zone is given.
std::optional<time_t> ParseIsoTime(const std::string& stamp);

/// 040601.120000 or 20040601.120000, as IGES has it; years of two digits from 70 on are of the last century.
std::optional<time_t> ParseIgesTime(const std::string& stamp);

} // namespace cadex::text
