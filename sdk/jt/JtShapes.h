// The triangles, polylines and points of a segment with a level of detail of a shape.
//
//     const Shape shape = ReadShape(container.Open(segment, storage, budget), values);
#pragma once

#include <vector>

#include "sdk/jt/JtBytes.h"
#include "sdk/model/TriangleSets.h"

namespace cadex::jt {

struct Shape
{
    enum class Kind : std::uint8_t
    {
        Triangles,
        Polylines ///< and points, which are polylines of one
    };
    Kind kind = Kind::Triangles;
    internal::TriangleArrays arrays;     ///< in units of the file; no indices for polylines
    std::vector<std::vector<U32>> lines; ///< polylines, by points
    bool hasColours = false;             ///< of single vertices, which are left out
};

/// Throws Unreadable, or Unsupported where the shape alone cannot be shown. Triangles are cut from strips and
/// polygons.
Shape ReadShape(Bytes in, Budget& values);

} // namespace cadex::jt
