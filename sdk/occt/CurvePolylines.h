// From edges that bound no face (wires, loose curves) to polylines.
#pragma once

#include <cstddef>
#include <vector>

#include <TopoDS_Edge.hxx>

#include <cadex/ModelData_Point.hxx>

#include "sdk/occt/ShapeMesher.h"

namespace cadex::occt {

using Polyline = std::vector<ModelData_Point>;

/// The curve of an edge within its bounds, in the coordinates of the shape and the direction of the edge:
/// lines give two points, polygonal curves their corners, others as many as the tolerances ask for.
/// `shapeSize` is that of the part, for relative chords. Fewer than two points when the edge has no curve or
/// an unbounded one.
Polyline DiscretiseEdge(const TopoDS_Edge& edge, const MeshTolerances& tolerances, double shapeSize);

/// Joins curves that meet end to end, at a point where no third one ends, into one polyline each (closed
/// rings included: last point equal to first). Ends meet when their coordinates agree within `tolerance`
/// millimetres. The result is in the order of the first curve of each chain, which also gives the direction.
std::vector<Polyline> JoinCurves(std::vector<Polyline> curves, double tolerance);

} // namespace cadex::occt
