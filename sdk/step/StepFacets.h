// Geometry of a STEP file whose bodies are made of planar triangles and polygons, straight from the text.
#pragma once

#include <vector>

#include "sdk/step/StepModelBuilder.h"

namespace cadex::step {

/// Faceted B-reps and shells with polygonal loops, bodies of very many faces that are all triangles between
/// straight edges, and polylines become triangles and points without a description of their faces, which
/// takes several times as long and as much memory. What they give is what the description gives: same
/// triangles, winding, colours and volume.
class StepFacets : public StepGeometry
{
public:
    /// False when the file holds anything else, or nothing: then StepBodies reads it. The text may go
    /// afterwards.
    bool Read(const ClearText& text, const StepContent& content);

    StepBody Body(std::size_t product) override { return myBodies[product]; }
    ModelData_Transformation Placement(std::size_t instance) override { return myPlacements[instance]; }

private:
    std::vector<StepBody> myBodies;
    std::vector<ModelData_Transformation> myPlacements;
};

} // namespace cadex::step
