#include <cadex/ModelData_ShapeConverter.hxx>

#include <cmath>

#include <BRepBuilderAPI_GTransform.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRep_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_GTrsf.hxx>
#include <gp_Trsf.hxx>

#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/mesh/PlacedParts.h"
#include "sdk/occt/EngineBRep.h"
#include "sdk/occt/EngineScope.h"

namespace cadex {

namespace {

using mesh::Affine;

// A scale factor this near to 1 is none: the kernel's own limit for locations.
constexpr double RigidTolerance = 1e-12;

TopoDS_Shape ShapeOf(const ModelData_Part& part)
{
    const ModelData_BRepRepresentation brep = part.BRepRepresentation();
    const auto* body = occt::BRepOf<occt::EngineBRep>(brep);
    return body != nullptr ? body->KernelShape() : TopoDS_Shape();
}

/// Rigid placements become locations; others change the geometry of a copy.
TopoDS_Shape Placed(const TopoDS_Shape& shape, const Affine& placement)
{
    if (mesh::IsIdentity(placement)) {
        return shape;
    }
    const mesh::Matrix3& m = placement.linear;
    const mesh::Vector3& t = placement.translation;
    if (mesh::IsSimilarity(placement)) {
        gp_Trsf trsf;
        trsf.SetValues(m[0], m[1], m[2], t[0], m[3], m[4], m[5], t[1], m[6], m[7], m[8], t[2]);
        const bool isRigid = !trsf.IsNegative() && std::abs(trsf.ScaleFactor() - 1) < RigidTolerance;
        if (isRigid) {
            // A location takes no scale at all, not even a rounding error of one.
            trsf.SetScaleFactor(1);
            return shape.Moved(trsf);
        }
        return BRepBuilderAPI_Transform(shape, trsf, true).Shape();
    }
    const gp_GTrsf general(gp_Mat(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8]),
                           gp_XYZ(t[0], t[1], t[2]));
    return BRepBuilderAPI_GTransform(shape, general, true).Shape();
}

bool IsSingular(const Affine& placement)
{
    return !mesh::IsFinite(placement) || mesh::Determinant(placement.linear) == 0;
}

template <typename Visited>
TopoDS_Shape CompoundOf(const Visited& visited)
{
    BRep_Builder builder;
    TopoDS_Compound compound;
    mesh::ForEachPlacedPart(visited, [&](const mesh::PlacedPart& placed) {
        const TopoDS_Shape shape = IsSingular(placed.placement) ? TopoDS_Shape() : ShapeOf(placed.part);
        if (shape.IsNull()) {
            return;
        }
        if (compound.IsNull()) {
            builder.MakeCompound(compound);
        }
        builder.Add(compound, Placed(shape, placed.placement));
    });
    return compound;
}

} // namespace

TopoDS_Shape ModelData_ShapeConverter::Convert(const ModelData_SceneGraphElement& theElement)
{
    TopoDS_Shape result;
    const bool isDone = occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        result = theElement.IsOfType<ModelData_Part>()
                     ? ShapeOf(static_cast<const ModelData_Part&>(theElement))
                     : CompoundOf(theElement);
        return true;
    });
    return isDone ? result : TopoDS_Shape();
}

TopoDS_Shape ModelData_ShapeConverter::Convert(const ModelData_Model& theModel)
{
    TopoDS_Shape result;
    const bool isDone = occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        result = CompoundOf(theModel);
        return true;
    });
    return isDone ? result : TopoDS_Shape();
}

} // namespace cadex
