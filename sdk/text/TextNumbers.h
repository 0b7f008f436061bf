// Numbers in exchange files: independent of the locale, correctly rounded.
#pragma once

#include <string_view>

namespace cadex::text {

/// Reads a whole text as a real: sign, digits with or without a point, exponent with E, e, D or d. False when
/// anything else is in it, when it is empty or when it is not finite; the value is then unchanged.
bool ParseReal(std::string_view text, double& value);

} // namespace cadex::text
