// Writes a model as a 3DM file of version 5: roots as layers, assemblies and shared parts as blocks, other
// parts as meshes and curves, with materials, names and user strings.
//
//     mesh::ExportPlan plan;
//     if (plan.Build(model)) { RhinoWriter(sink, plan, options).Write(); }
#pragma once

#include <vector>

#include "sdk/mesh/ExportPlan.h"
#include "sdk/rhino/RhinoChunkWriter.h"
#include "sdk/rhino/RhinoLayout.h"

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
    void BeginObjectRecord(std::int64_t kind);
    void EndObjectRecord(const Attributes& attributes);
    void WriteStrings(const ModelData_PropertyTable& properties);

    ChunkWriter myOut;
    const mesh::ExportPlan& myPlan;
    const mesh::ExportOptions& myOptions;
    double myUnitsPerMillimetre;
    RhinoLayout myLayout;
};

} // namespace cadex::rhino
