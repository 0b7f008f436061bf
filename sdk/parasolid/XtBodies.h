// One body of a Parasolid file as a description.
#pragma once

#include "sdk/parasolid/XtAttributes.h"
#include "sdk/parasolid/XtFile.h"
#include "sdk/parasolid/XtGeometry.h"

namespace cadex::parasolid {

XtBody DescribeBody(const Nodes& nodes, const Node& body, GeometryReader& geometry,
                    AttributeTable& attributes);

} // namespace cadex::parasolid
