// What will stand in a STEP file: each part or assembly of the model as one definition for each residual
// under which it is placed, and rigid placements of definitions inside assemblies.
#pragma once

#include <cstddef>
#include <vector>

#include <cadex/Base_LengthUnit.hxx>
#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_SceneGraphElement.hxx>

#include "sdk/mesh/Placement.h"

namespace cadex::mesh {

/// What the caller of a writer says of the file.
struct ExportOptions
{
    Base_LengthUnit unit = Base_LU_Millimeters;
    Base_UTF16String fileName; ///< for the header
    Base_UTF16String author;
    Base_UTF16String organization;
    Base_UTF16String originatingSystem;
};

struct ExportPlan
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

} // namespace cadex::mesh
