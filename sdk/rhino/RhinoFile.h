// A 3DM file in memory: its tables and its objects, with their geometry in millimetres.
//
//     RhinoFile file;
//     if (file.Load(std::move(bytes))) { ModelBuilder(file).Build(model); }
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <cadex/ModelData_PolyVertexSet.hxx>

#include "sdk/rhino/RhinoBodies.h"

namespace cadex::rhino {

/// A block placed by any affine matrix.
struct Reference
{
    Uuid definition;
    std::array<double, 16> matrix{}; ///< row by row; lengths in units of the file
};

struct Object
{
    Attributes attributes;
    const char* kind = "";                     ///< what it is, for those without a name
    std::vector<ModelData_PolyVertexSet> sets; ///< triangles and polylines
    std::unique_ptr<Body> body;                ///< or an exact body, or a curve
    std::optional<Reference> reference;        ///< or a reference
    std::optional<PackedColour> colour;        ///< of all vertices of a mesh
};

class RhinoFile
{
public:
    RhinoFile() = default;
    RhinoFile(const RhinoFile&) = delete;
    RhinoFile& operator=(const RhinoFile&) = delete;

    /// Reads everything but the meshes that the file keeps for the display of exact bodies. False, with the
    /// reason among the reports, when the file is damaged anywhere that is read, of version 1, or none at
    /// all. Call it inside the engine's guard.
    bool Load(std::string bytes);

    Document document;
    std::vector<Layer> layers;
    std::vector<Material> materials;
    std::vector<Definition> definitions;
    std::vector<Object> objects;
    internal::AppearanceCache faceColours;

private:
    void ReadTable(Chunk& table);
    void ReadObjectRecord(Chunk& record);
    bool ReadGeometry(const Uuid& classId, Chunk& data, Object& object, std::optional<Mesh>& mesh);
    void NumberLayersAndMaterials();

    /// Bodies keep it for the meshes that the file has of their faces.
    struct Source
    {
        std::string bytes;
        std::optional<Archive> archive;
    };
    std::shared_ptr<Source> mySource;
};

} // namespace cadex::rhino
