// Parts of described bodies, for the formats that give bodies with names, texts and placements.
#pragma once

#include <array>
#include <utility>
#include <vector>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_Transformation.hxx>

#include "sdk/brep/Description.h"

namespace cadex::brep {

/// Keys and values.
using Texts = std::vector<std::pair<Base_UTF16String, Base_UTF16String>>;

/// Adds what there is to the element's properties.
void AddTexts(ModelData_SceneGraphElement& element, const Texts& texts);

/// The body as a part with its appearance, the texts as properties, and its exact representation. Null, and a
/// report, when the description is empty.
ModelData_Part MakePart(Description&& body, const Base_UTF16String& name, const Texts& texts,
                        std::uint64_t record = 0);

/// Of the rows of a 3 x 4 matrix, the last column in millimetres.
ModelData_Transformation TransformationOf(const std::array<double, 12>& rows);

} // namespace cadex::brep
