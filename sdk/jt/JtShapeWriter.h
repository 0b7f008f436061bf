// Segments of shapes as version 8.1 has them: strips and polylines with exact vertices.
#pragma once

#include <array>
#include <string>

#include <cadex/ModelData_PolyVertexSet.hxx>

#include "sdk/jt/JtElements.h"
#include "sdk/mesh/Placement.h"

namespace cadex::jt {

/// What the node of a shape says of it; lengths in units of the file.
struct ShapeFacts
{
    std::array<float, 6> box{}; ///< least, then most
    double area = 0;
    std::size_t vertices = 0;
    std::size_t primitives = 0; ///< triangles or polylines
    std::size_t bytes = 0;      ///< of the vertices
    bool isLines = false;
    bool hasNormals = false;
    bool hasUvs = false;

    bool IsEmpty() const { return vertices == 0; }
};

/// The element of a level of detail: what the segment holds after its head. `linear` takes millimetres to
/// units of the file. Empty, as the facts are, when the set has nothing to show.
std::string WriteShape(const ModelData_PolyVertexSet& set, const mesh::Matrix3& linear, ShapeFacts& facts);

/// A zlib stream.
std::string Deflated(std::string_view bytes);

} // namespace cadex::jt
