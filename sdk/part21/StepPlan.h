// What will stand in a STEP file: each part or assembly of the model as one definition for each residual
// under which it is placed, and rigid placements of definitions inside assemblies.
#pragma once

#include <cstddef>
#include <vector>

#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>

#include "sdk/part21/Placement.h"

namespace cadex {
namespace internal {

struct StepPlan
{
    struct Occurrence
    {
        ModelData_SceneGraphElement instance;
        std::size_t definition = 0;
        Matrix3 rotation = Identity3;
        Vector3 translation{}; ///< millimetres
    };

    struct Definition
    {
        ModelData_SceneGraphElement element; ///< null: the assembly made around instances that are roots
        Matrix3 residual = Identity3;
        std::vector<Occurrence> occurrences; ///< of an assembly
    };

    Base_UTF16String modelName;
    std::vector<Definition> definitions;
    std::vector<std::size_t> order; ///< of writing: children before parents

    /// False when the model cannot be written: an assembly contains itself, a placement is not finite, an
    /// instance refers to an instance, or a part has an exact shape but no mesh. An instance of nothing is
    /// left out.
    bool Build(const ModelData_Model& model);
};

} // namespace internal
} // namespace cadex
