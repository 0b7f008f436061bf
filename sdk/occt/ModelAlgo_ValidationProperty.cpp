#include <cadex/ModelAlgo_ValidationProperty.hxx>

#include <cmath>

#include <TopoDS_Shape.hxx>

#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>

#include "sdk/mesh/PlacedParts.h"
#include "sdk/occt/EngineScope.h"
#include "sdk/occt/MassProperties.h"
#include "sdk/occt/OcctBRep.h"

namespace cadex {

namespace {

using occt::MassProperties;

template <typename BRep, typename Source>
std::optional<MassProperties> Known(const BRep& brep, const Source& source)
{
    if (!brep.mass.isKnown) {
        brep.mass.value = occt::ComputeMass(source);
        brep.mass.isKnown = true;
    }
    return brep.mass.value;
}

/// A shared part is integrated once: its object remembers.
std::optional<MassProperties> MassOf(const ModelData_Part& part)
{
    const ModelData_BRepRepresentation brep = part.BRepRepresentation();
    if (const auto* exact = occt::BRepOf<occt::OcctBRep>(brep)) {
        return Known(*exact, exact->shape);
    }
    if (const auto* facets = occt::BRepOf<occt::FacetedBRep>(brep)) {
        return Known(*facets, *facets);
    }
    return std::nullopt;
}

double AreaOf(const ModelData_Part& part)
{
    const ModelData_BRepRepresentation brep = part.BRepRepresentation();
    if (const auto* exact = occt::BRepOf<occt::OcctBRep>(brep)) {
        return occt::ComputeArea(exact->shape);
    }
    const auto* facets = occt::BRepOf<occt::FacetedBRep>(brep);
    return facets != nullptr ? occt::ComputeArea(*facets) : 0;
}

/// Sum over the placed parts; parts without a B-rep count nothing, a part whose mass is unknown leaves all
/// unknown.
std::optional<MassProperties> MassOfElement(const ModelData_SceneGraphElement& element)
{
    bool isWhole = true;
    MassProperties sum;
    double moment[3] = {0, 0, 0};
    mesh::ForEachPlacedPart(element, [&](const mesh::PlacedPart& placed) {
        if (placed.part.BRepRepresentation().IsNull()) {
            return;
        }
        const std::optional<MassProperties> mass = MassOf(placed.part);
        if (!mass || !mesh::IsFinite(placed.placement)) {
            isWhole = false;
            return;
        }
        const double volume = mass->volume * std::abs(mesh::Determinant(placed.placement.linear));
        const ModelData_Point centroid = mesh::Apply(placed.placement, mass->centroid);
        sum.volume += volume;
        moment[0] += volume * centroid.X();
        moment[1] += volume * centroid.Y();
        moment[2] += volume * centroid.Z();
    });
    if (!isWhole || !(sum.volume > 0)) {
        return std::nullopt;
    }
    sum.centroid = {moment[0] / sum.volume, moment[1] / sum.volume, moment[2] / sum.volume};
    return sum;
}

/// Not a number when a placement is not one scale for all directions: the area then has no simple factor.
double AreaOfElement(const ModelData_SceneGraphElement& element)
{
    double sum = 0;
    mesh::ForEachPlacedPart(element, [&](const mesh::PlacedPart& placed) {
        const double scale = std::cbrt(std::abs(mesh::Determinant(placed.placement.linear)));
        sum += mesh::IsSimilarity(placed.placement) ? AreaOf(placed.part) * scale * scale : std::nan("");
    });
    return sum;
}

} // namespace

bool ModelAlgo_ValidationProperty::ComputeValidationProperties(const ModelData_SceneGraphElement& theElement,
                                                               ModelAlgo_ValidationPropertyData& theData)
{
    if (theElement.IsNull()) {
        return false;
    }
    std::optional<MassProperties> mass;
    const bool isDone = occt::RunGuarded(occt::EngineUse::Geometry, [&] {
        mass = MassOfElement(theElement);
        return mass.has_value();
    });
    if (!isDone) {
        return false;
    }
    theData = ModelAlgo_ValidationPropertyData();
    theData.Volume() = mass->volume;
    theData.Centroid() = mass->centroid;
    theData.SetLazySurfaceArea([element = theElement] {
        double area = 0;
        occt::RunGuarded(occt::EngineUse::Geometry, [&] {
            area = AreaOfElement(element);
            return true;
        });
        return area;
    });
    return true;
}

} // namespace cadex
