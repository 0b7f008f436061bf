// Writes a model as a 3DM file of version 5: roots as layers, assemblies and shared parts as blocks, other
// parts as meshes and curves, with materials, names and user strings.
//
//     mesh::ExportPlan plan;
//     if (plan.Build(model)) { RhinoWriter(sink, plan, options).Write(); }
#pragma once

#include <unordered_map>
#include <vector>

#include "sdk/mesh/ExportPlan.h"
#include "sdk/rhino/RhinoChunkWriter.h"
#include "sdk/rhino/RhinoTables.h"

namespace cadex::rhino {

/// Streams one file; memory depends on the largest single mesh and the number of definitions and occurrences.
///
/// A root of the model becomes a layer with its name and properties, and what it holds the objects on that
/// layer. A part that stands in one place alone, without being moved there, is a mesh or a curve; every other
/// part and every assembly is a block and references to it. Parts whose placements differ by a scale, a
/// mirror or a shear share one block: a reference may have any matrix. Parts of several sets are blocks whose
/// objects have no name. Blocks of the same name are told apart by a number in brackets; their description is
/// then the name without it.
class RhinoWriter
{
public:
    RhinoWriter(text::ByteSink& sink, const mesh::ExportPlan& plan, const mesh::ExportOptions& options);

    /// Writes the whole file. False when the sink failed.
    bool Write();

private:
    /// What an object is, beside its geometry.
    struct Attributes
    {
        Uuid id;
        Base_UTF16String name;
        std::int32_t layer = 0;
        ModelData_Appearance appearance; ///< null: by the layer, or by the parent in a block
        bool isMember = false;           ///< of a block
        ModelData_PropertyTable properties;
    };
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

    void Plan();
    void FindBases();
    void FindRoots();
    void NameBlocks();
    bool IsPlain(const mesh::ExportPlan::Occurrence& occurrence, const mesh::ExportPlan::Definition& parent,
                 bool parentIsRoot) const;
    void CollectAppearances();
    void Collect(const ModelData_Appearance& appearance);

    void WriteTables();
    void WriteSettings();
    void WriteMaterials();
    void WriteLayers();
    void WriteDefinitions();
    void WriteObjects();
    void WriteEmptyTable(std::uint32_t typeCode);
    void WriteEnd();

    void WriteDefinition(std::size_t index);
    void WriteMembers(std::size_t index, bool isRoot);
    void WriteOccurrence(const mesh::ExportPlan::Occurrence& occurrence, Attributes attributes, bool isPlain);
    void WriteReference(const mesh::ExportPlan::Occurrence& occurrence, const Attributes& attributes);
    /// Writes the sets of a part as objects; gives their number. Ids follow each other from the first on.
    std::size_t WriteSets(std::size_t definition, Attributes attributes);
    void WriteChain(const std::vector<ModelData_Point>& chain, const mesh::Matrix3& linear);
    std::size_t CountSets(const ModelData_SceneGraphElement& part) const;
    void BeginObjectRecord(std::int64_t kind);
    void EndObjectRecord(const Attributes& attributes);
    void WriteStrings(const ModelData_PropertyTable& properties);

    Uuid IdOf(char kind, std::size_t number, std::size_t item = 0) const;

    ChunkWriter myOut;
    const mesh::ExportPlan& myPlan;
    const mesh::ExportOptions& myOptions;
    double myUnitsPerMillimetre;
    std::uint64_t mySeed;
    std::vector<Block> myBlocks; ///< by definition
    std::vector<std::size_t> myRoots;
    std::vector<ModelData_Appearance> myMaterials;
    std::unordered_map<ModelData_Appearance, std::int32_t, ModelData_AppearanceHash> myMaterialOf;
};

} // namespace cadex::rhino
