#pragma once

#include <limits>

namespace Zemtar {

/// Truncates toward zero to a 32-bit integer. NaN and values that do not fit give the smallest integer.
///
/// NOTE: that is the result of the conversion instruction of 64-bit x86 (CVTTSD2SI), on which the stored
/// texts rest; the language leaves it undefined.
inline int TruncateToInt(double value)
{
    constexpr double Below = -2147483649.0;
    constexpr double Above = 2147483648.0;
    return value > Below && value < Above ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

} // namespace Zemtar
