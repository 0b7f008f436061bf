// Numbers in exchange files: independent of the locale, correctly rounded.
#pragma once

#include <string_view>

namespace cadex::text {

/// Reads the real that the bytes begin with: sign, digits with or without a point, exponent with E, e, D or
/// d. Gives the place behind it, or `first`, with the value unchanged, when there is none or it is too large
/// for a double; what is too small is zero.
const char* ReadReal(const char* first, const char* last, double& value);

/// Reads a whole text as a real. False, with the value unchanged, when anything else is in it.
bool ParseReal(std::string_view text, double& value);

} // namespace cadex::text
