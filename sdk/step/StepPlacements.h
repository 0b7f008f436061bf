// Where a STEP file places its occurrences, from the text alone.
#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include <cadex/ModelData_Transformation.hxx>

#include "sdk/step/StepStructure.h"
#include "sdk/step/StepText.h"

namespace cadex::step {

/// Reads placements; the text and structure must outlive it.
class StepPlacements
{
public:
    StepPlacements(const ClearText& text, const StepStructure& structure)
        : myText(text), myStructure(structure)
    {
    }

    /// The placement of an instance in millimetres; nothing when it is not given by two axis placements (a
    /// scaling operator, a mapped item, no placement at all), or when an axis placement is degenerate.
    ///
    /// NOTE: ISO 10303-43, item_defined_transformation: the first axis placement, in the representation of
    /// the placed product, goes to the second, in that of the assembly. Files with the two representations
    /// swapped are common.
    std::optional<ModelData_Transformation> Read(const StepInstance& instance);
    /// Those of all instances; nothing when one is missing.
    std::optional<std::vector<ModelData_Transformation>> ReadAll();

private:
    double UnitOf(RecordId representation);

    const ClearText& myText;
    const StepStructure& myStructure;
    // An assembly's representation lists the axes of all that stands in it: it is gone through once.
    std::unordered_map<RecordId, double> myUnits;
};

} // namespace cadex::step
