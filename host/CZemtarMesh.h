#pragma once

#include "host/ZemtarCoreExport.h"

namespace Zemtar {

class CZemtarPolygonsTable;
class CZemtarRigGeometryTable;
class CZemtarTextureCoordinatesTable;
class CZemtarVerticiesNormalsTable;
class CZemtarVerticiesTable;

/// Operations on mesh tables.
class ZEMTAR_CORE_EXPORT CZemtarMesh
{
public:
    CZemtarMesh() = delete;

    /// Merges identical vertices: of all whose position, normal, texture coordinate and rig influence are the
    /// same, the first stays, in the order in which they stand, and the polygons point to it. With
    /// `positionsOnly` the position alone decides, and the first one's other values stay. Surplus memory of
    /// the tables is released.
    ///
    /// Numbers are the same when they are equal, so that 0.0 and -0.0 merge, or have the same bits, so that a
    /// vertex with a NaN merges with its exact copies. Nothing is rounded.
    ///
    /// Null or empty tables other than the vertices take no part. A table whose length is not that of the
    /// vertices cannot belong to them by index: it takes no part and is left as it is. Polygon indices beyond
    /// the vertices are left as they are. Without vertices nothing happens.
    ///
    /// Merging several times while the tables are being filled gives the same as merging once at the end,
    /// with less memory: who merges whenever the tables have doubled never holds all the unshared vertices.
    ///
    /// Time is linear in the number of vertices. Besides the tables it takes 12 to 24 bytes for each vertex
    /// that stays, half as much again for a moment while it grows, and 4 for each one given unless the
    /// polygons name them in sequence.
    static void CombineIdenticalVerticesInPlace(CZemtarVerticiesTable* vertices,
                                                CZemtarVerticiesNormalsTable* normals,
                                                CZemtarPolygonsTable* polygons,
                                                CZemtarTextureCoordinatesTable* textureCoordinates,
                                                bool positionsOnly, CZemtarRigGeometryTable* rig);
};

} // namespace Zemtar
