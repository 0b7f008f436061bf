// Triangles as a shape of the geometry kernel: planar faces with shared edges.
#pragma once

#include <TopoDS_Shape.hxx>

namespace cadex::occt {

class FacetedBRep;

/// A solid for a closed body, a shell for an open one; a compound when there are several, a null shape when
/// there are no triangles. A triangle is a plane, each edge of two triangles one line, each point one vertex.
TopoDS_Shape MakeShape(const FacetedBRep& facets);

} // namespace cadex::occt
