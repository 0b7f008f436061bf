#include <cadex/ModelData_ShapeConverter.hxx>

#include <BRepBuilderAPI_GTransform.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRep_Builder.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_GTrsf.hxx>
#include <gp_Trsf.hxx>

#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/occt/EngineScope.h"
#include "sdk/occt/MeshToShape.h"
#include "sdk/occt/OcctBRep.h"
#include "sdk/occt/PlacedParts.h"

namespace cadex {

namespace {

using occt::Affine;

TopoDS_Shape ShapeOf(const ModelData_Part& part)
{
    const ModelData_BRepRepresentation brep = part.BRepRepresentation();
    if (const auto* exact = occt::BRepOf<occt::OcctBRep>(brep)) {
        return exact->shape;
    }
    if (const auto* facets = occt::BRepOf<occt::FacetedBRep>(brep)) {
        return occt::MakeShape(*facets);
    }
    return {};
}

gp_Trsf ToTrsf(const Affine& placement)
{
    const auto& m = placement.m;
    gp_Trsf result;
    result.SetValues(m[0][0], m[0][1], m[0][2], m[0][3], m[1][0], m[1][1], m[1][2], m[1][3], m[2][0], m[2][1],
                     m[2][2], m[2][3]);
    return result;
}

/// Rigid placements become locations; others change the geometry of a copy.
TopoDS_Shape Placed(const TopoDS_Shape& shape, const Affine& placement)
{
    if (placement.IsIdentity()) {
        return shape;
    }
    if (placement.IsSimilarity()) {
        const gp_Trsf trsf = ToTrsf(placement);
        const bool isRigid = !trsf.IsNegative() && std::abs(trsf.ScaleFactor() - 1) < 1e-12;
        return isRigid ? shape.Moved(trsf) : BRepBuilderAPI_Transform(shape, trsf, true).Shape();
    }
    gp_GTrsf general;
    for (int row = 1; row <= 3; ++row) {
        for (int column = 1; column <= 4; ++column) {
            general.SetValue(
                row, column,
                placement.m[static_cast<std::size_t>(row - 1)][static_cast<std::size_t>(column - 1)]);
        }
    }
    return BRepBuilderAPI_GTransform(shape, general, true).Shape();
}

template <typename Visited>
TopoDS_Shape CompoundOf(const Visited& visited)
{
    BRep_Builder builder;
    TopoDS_Compound compound;
    occt::ForEachPlacedPart(visited, [&](const occt::PlacedPart& placed) {
        const TopoDS_Shape shape = placed.placement.IsRegular() ? ShapeOf(placed.part) : TopoDS_Shape();
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
