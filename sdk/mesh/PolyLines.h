// Polylines of a set as they hang together.
#pragma once

#include <vector>

#include <cadex/ModelData_Point.hxx>

#include "sdk/model/TriangleSets.h"

namespace cadex::mesh {

/// Polylines that begin where the one before ends are one; a single point stays one.
std::vector<std::vector<ModelData_Point>> ChainsOf(const internal::PolyLineSetImpl& lines);

} // namespace cadex::mesh
