// Meshes the B-Rep of parts and adds the result to them as a poly representation.
//
//     ModelAlgo_BRepMesher(ModelAlgo_BRepMesherParameters()).Compute(model, true);
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelAlgo_BRepMesherParameters.hxx>

namespace cadex {

class ModelData_Model;
class ModelData_SceneGraphElement;

class CADEX_EXPORT ModelAlgo_BRepMesher
{
public:
    ModelAlgo_BRepMesher() = default;
    ModelAlgo_BRepMesher(const ModelAlgo_BRepMesherParameters& theParameters) : myParameters(theParameters) {}

    /// Meshes each part once, however often it is placed; a part that has a poly representation already is
    /// skipped unless `theEnforceAddition`. A part that cannot be meshed is left without a mesh.
    void Compute(const ModelData_Model& theModel, bool theEnforceAddition = false) const;
    void Compute(const ModelData_SceneGraphElement& theElement, bool theEnforceAddition = false) const;

private:
    ModelAlgo_BRepMesherParameters myParameters;
};

} // namespace cadex
