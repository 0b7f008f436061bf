// From the parts of a STEP file that have been read to the model: elements, names, placements, looks and
// properties.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Transformation.hxx>

#include "sdk/step/StepProperties.h"
#include "sdk/step/StepStructure.h"
#include "sdk/step/StepStyles.h"

namespace cadex::step {

/// A shape and its look as a whole.
struct StepBody
{
    ModelData_BRepRepresentation representation; ///< null when there is no geometry
    ModelData_Appearance appearance;             ///< null when the shape has no look as a whole
    Base_UTF16String name;
};

/// Where the geometry comes from: the bodies that the text describes, or the facets that it gives.
class StepGeometry
{
public:
    virtual ~StepGeometry() = default;
    /// What the product has beside the products that it is assembled from.
    virtual StepBody Body(std::size_t product) = 0;
    /// Where the instance places its product, in millimetres. Mirrored and scaled placements are kept as they
    /// are.
    virtual ModelData_Transformation Placement(std::size_t instance) = 0;
    /// Shapes that belong to no product.
    virtual std::vector<StepBody> LooseBodies() { return {}; }
};

/// Everything that the text tells beside the geometry.
struct StepContent
{
    StepStructure structure;
    StepStyles styles;
    StepProperties properties;
    ModelData_PropertyTable header;
    Base_UTF16String
        rootName; ///< for a single root that has no name: what the file calls itself, else its name
    bool hasGeometry = false; ///< some product is represented by more than placements
};

/// Reads the content; false when the product structure is refused (see StepStructure::Build).
bool ReadStepContent(const ClearText& text, const Base_UTF16String& fileName, StepContent& content);

/// Appends the roots to the model: an assembly for a product that is assembled, else a part; each product
/// once, however often it is used. An assembly that has geometry of its own gets it as a part of the same
/// name. The header's properties go to every root. False when the file holds nothing, or
/// geometry of which nothing could be made.
bool BuildStepModel(const StepContent& content, StepGeometry& geometry, ModelData_Model& model);

} // namespace cadex::step
