// Triangle meshes and polylines as shape items of a STEP file.
#pragma once

#include <vector>

#include "sdk/mesh/Placement.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/part21/Part21Writer.h"

namespace cadex::step {

using internal::PolyLineSetImpl;
using internal::TriangleSetImpl;
using mesh::Matrix3;
using part21::Part21Writer;
using part21::Ref;

enum class StepShapeKind
{
    Solid,
    Surface,
    Curves
};

struct StepShapeItem
{
    Ref ref;
    StepShapeKind kind;
};

/// Writes a mesh, mapped into the file by `linear` (a mirror turns the triangles round): closed pieces that
/// enclose space as FACETED_BREP, the others as SHELL_BASED_SURFACE_MODEL. Appends the items, none when no
/// triangle is left.
void WriteStepMesh(Part21Writer& out, const TriangleSetImpl& mesh, const Matrix3& linear,
                   std::vector<StepShapeItem>& items);

/// Writes polylines as one GEOMETRIC_CURVE_SET; those without two distinct points, or with a point that is
/// not finite, are left out. Those that go on where the one before ended become one POLYLINE with it.
void WriteStepPolyLines(Part21Writer& out, const PolyLineSetImpl& lines, const Matrix3& linear,
                        std::vector<StepShapeItem>& items);

} // namespace cadex::step
