// Volume, surface area and centroid of an element.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>

namespace cadex {

class ModelData_SceneGraphElement;

class CADEX_EXPORT ModelAlgo_ValidationProperty
{
public:
    /// False, with the data untouched, when the element has no shape from which they can be computed.
    static bool ComputeValidationProperties(const ModelData_SceneGraphElement& theElement,
                                            ModelAlgo_ValidationPropertyData& theData);
};

} // namespace cadex
