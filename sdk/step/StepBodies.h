// Geometry of a STEP file from its text: what belongs to each product, and where its instances stand.
#pragma once

#include <vector>

#include <cadex/STEP_ReaderParameters.hxx>

#include "sdk/step/StepBodyReader.h"
#include "sdk/step/StepModelBuilder.h"

namespace cadex::step {

/// Reads all bodies at once; the text may go afterwards.
class StepBodies : public StepGeometry
{
public:
    /// Never fails: what cannot be read is left out and reported.
    void Read(const ClearText& text, const StepContent& content,
              STEP_ReaderParameters::BRepRepresentationType preferred);

    /// The file holds something to be seen, whether or not anything came of it.
    bool HasItems() const { return myHasItems; }

    StepBody Body(std::size_t product) override { return myBodies[product]; }
    ModelData_Transformation Placement(std::size_t instance) override { return myPlacements[instance]; }
    std::vector<StepBody> LooseBodies() override { return myLooseBodies; }

private:
    class Reading;

    std::vector<StepBody> myBodies;
    std::vector<StepBody> myLooseBodies;
    std::vector<ModelData_Transformation> myPlacements;
    bool myHasItems = false;
};

} // namespace cadex::step
