#include <cadex/ModelAlgo_ValidationProperty.hxx>

#include <cmath>

#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>

#include "sdk/mesh/PlacedParts.h"
#include "sdk/occt/EngineBRep.h"
#include "sdk/occt/EngineScope.h"

namespace cadex {

namespace {

using occt::MassProperties;

/// A shared part is integrated once: its body remembers.
std::optional<MassProperties> MassOf(const ModelData_Part& part)
{
    const ModelData_BRepRepresentation brep = part.BRepRepresentation();
    const auto* body = occt::BRepOf<occt::EngineBRep>(brep);
    return body != nullptr ? body->Mass() : std::nullopt;
}

double AreaOf(const ModelData_Part& part)
{
    const ModelData_BRepRepresentation brep = part.BRepRepresentation();
    const auto* body = occt::BRepOf<occt::EngineBRep>(brep);
    return body != nullptr ? body->Area() : 0;
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
