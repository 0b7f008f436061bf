// What a 3DM file makes of a model: its layers, blocks and materials, and the ids of everything.
//
//     RhinoLayout layout(plan);
//     for (std::size_t root : layout.roots) { ... plan.definitions[root] ... }
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Part.hxx>

#include "sdk/mesh/ExportPlan.h"
#include "sdk/rhino/RhinoChunks.h"

namespace cadex::rhino {

/// Whether there is more to an appearance than a colour that covers.
bool IsMaterial(const ModelData_Appearance& appearance);

/// The shapes of a part that are written.
const ModelData_PolyShapeList& SetsOf(const ModelData_SceneGraphElement& part);

/// Made once for a plan, which must outlive it.
class RhinoLayout
{
public:
    /// A part or assembly of the plan as a block.
    struct Block
    {
        std::size_t base = 0;                  ///< the definition whose block this one uses
        mesh::Matrix3 extra = mesh::Identity3; ///< on top of the base's own residual
        std::size_t uses = 0;                  ///< of all that have this base
        bool isWritten = false;                ///< some reference asks for it
        std::size_t objects = 0;               ///< in it
        std::int32_t layer = -1;               ///< of a root
        Base_UTF16String name;                 ///< of the block
    };

    explicit RhinoLayout(const mesh::ExportPlan& plan);

    /// Whether an occurrence needs no reference.
    bool IsPlain(const mesh::ExportPlan::Occurrence& occurrence, const mesh::ExportPlan::Definition& parent,
                 bool parentIsRoot) const;

    /// The same for the same place in the same model.
    Uuid IdOf(char kind, std::size_t number, std::size_t item = 0) const;

    std::vector<Block> blocks; ///< by definition
    std::vector<std::size_t> roots;
    std::vector<ModelData_Appearance> materials;
    std::unordered_map<ModelData_Appearance, std::int32_t, ModelData_AppearanceHash> materialOf;

private:
    void FindBases();
    void FindRoots();
    void NameBlocks();
    void CollectAppearances();
    void Collect(const ModelData_Appearance& appearance);

    const mesh::ExportPlan& myPlan;
    std::uint64_t mySeed;
};

} // namespace cadex::rhino
