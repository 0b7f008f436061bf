// Going round the corners of a triangle. For the sources of Delaunay.h; nobody else needs it.
#pragma once

#include <cstddef>

namespace cadex::mesh {

constexpr int Next(int corner)
{
    return corner == 2 ? 0 : corner + 1;
}
constexpr int Previous(int corner)
{
    return corner == 0 ? 2 : corner - 1;
}

constexpr std::size_t Index(int corner)
{
    return static_cast<std::size_t>(corner);
}

} // namespace cadex::mesh
