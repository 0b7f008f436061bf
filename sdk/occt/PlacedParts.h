// Walks a model down to its parts with the placement of each, as the instances above it add up.
#pragma once

#include <array>
#include <functional>

#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_Transformation.hxx>

namespace cadex::occt {

/// p' = M p + t with any 3 by 3 matrix M; rows of (M | t), millimetres.
struct Affine
{
    std::array<std::array<double, 4>, 3> m = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};

    static Affine Of(const ModelData_Transformation& transformation);

    /// First `inner`, then this.
    Affine operator*(const Affine& inner) const;
    ModelData_Point operator()(const ModelData_Point& point) const;
    double Determinant() const;
    /// All elements finite and the three axes independent of each other, whatever the scale.
    bool IsRegular() const;
    /// A rotation and mirror with one scale factor for all axes, within 1e-9.
    bool IsSimilarity() const;
    bool IsIdentity() const;
};

/// A part where it stands in the model.
struct PlacedPart
{
    const ModelData_Part& part;
    const Affine& placement;
    Base_UTF16String name; ///< of the nearest instance above the part, else the part's
    ModelData_Appearance
        appearance; ///< the part's, else of the nearest element above it; null when none has one
};

/// Calls back for each part as often as it is placed, in the order of the model.
void ForEachPlacedPart(const ModelData_Model& model, const std::function<void(const PlacedPart&)>& visit);
void ForEachPlacedPart(const ModelData_SceneGraphElement& element,
                       const std::function<void(const PlacedPart&)>& visit);

} // namespace cadex::occt
