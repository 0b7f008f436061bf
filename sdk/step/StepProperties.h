// Properties in a STEP file: user-defined attributes, validation properties, materials, and the header.
#pragma once

#include <unordered_map>

#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/step/StepStructure.h"
#include "sdk/step/StepText.h"

namespace cadex::step {

/// NOTE: ISO 10303-41 and the recommended practices for user-defined attributes, validation properties and
/// materials of the CAx Implementor Forum. Each item of a property's representation is one entry under the
/// item's name (that of the representation, then of the property, when it is blank; of the representation for
/// materials). Texts and booleans ("true", "false") are texts, integers are I32 or I64, reals double, points
/// points. Lengths, areas and volumes are in millimetres; other measures keep the unit of the file.
class StepProperties
{
public:
    void Read(const ClearText& text, const StepStructure& structure);

    /// By the numbers of StepStructure. Products also have "Product ID" (where it differs from the name) and
    /// "Description".
    std::unordered_map<std::size_t, ModelData_PropertyTable> products;
    std::unordered_map<std::size_t, ModelData_PropertyTable> instances;
};

/// "Author", "Organization", "Originating System", "Preprocessor", "Time Stamp" (a time, or a text when it is
/// none), "Schema"; only what the file states. Null when it states nothing.
ModelData_PropertyTable ReadStepHeader(const ClearText& text);

} // namespace cadex::step
