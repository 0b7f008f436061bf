// Meshes whose connectivity is coded by growing the dual mesh face by face (files from version 9 on).
//
//     const CodedMesh mesh = ReadTopology(in, budget);
//     for (std::size_t polygon = 0; polygon + 1 < mesh.starts.size(); ++polygon) { ... }
//
// NOTE: JT File Format Reference, "Topologically Compressed Rep Data" and its appendix on the mesh coder. The
// coder works on the dual: its vertices are the polygons of the mesh (of valence 3 the triangles), its faces
// the vertices.
#pragma once

#include <vector>

#include "sdk/jt/JtPackets.h"
#include "sdk/model/TriangleSets.h"

namespace cadex::jt {

/// Polygons, by the numbers of their corners' positions and attributes.
struct CodedMesh
{
    std::vector<std::size_t> starts{0}; ///< first corner of each polygon, and the end of the last
    std::vector<U32> points;
    std::vector<U32> attributes;
    std::size_t pointCount = 0;
    std::size_t attributeCount = 0;
};

/// Reads and decodes; what only covers holes is left out. Throws Unreadable.
CodedMesh ReadTopology(Bytes& in, Budget& budget);

} // namespace cadex::jt
