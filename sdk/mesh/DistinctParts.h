// The parts of a model or element, each once however often it is placed, in the order of the first visit.
#pragma once

#include <vector>

#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>

namespace cadex::mesh {

std::vector<ModelData_Part> DistinctParts(const ModelData_Model& model);
std::vector<ModelData_Part> DistinctParts(const ModelData_SceneGraphElement& element);

} // namespace cadex::mesh
