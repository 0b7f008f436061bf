// Materials of a JT file as appearances, one for all that look the same.
#pragma once

#include <unordered_set>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/jt/JtScene.h"

namespace cadex::jt {

class Looks
{
public:
    /// Of the last material among the attributes of a node; `inherited` when there is none.
    ModelData_Appearance Of(const Node& node, const Scene& scene, const ModelData_Appearance& inherited);

private:
    std::unordered_set<ModelData_Appearance, ModelData_AppearanceHash> myKnown;
};

} // namespace cadex::jt
