// Triangles as strips: each triangle after the first takes one more corner.
#pragma once

#include <vector>

#include <cadex/Base_Types.hxx>

namespace cadex::jt {

struct Strips
{
    std::vector<U32> starts{0}; ///< first corner of each strip, and the end of the last
    std::vector<U32> corners;   ///< vertices
};

/// Greedy. `indices` are three a triangle and lie below `vertexCount`; every triangle of three different
/// vertices is in one strip, wound as it is, whichever triangle of a strip it becomes.
Strips MakeStrips(const std::vector<U32>& indices, std::size_t vertexCount);

} // namespace cadex::jt
