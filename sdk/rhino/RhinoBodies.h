// Exact bodies of 3DM files, as descriptions: B-reps, single surfaces, extrusions.
#pragma once

#include <memory>
#include <optional>

#include "sdk/brep/Description.h"
#include "sdk/model/AppearanceCache.h"
#include "sdk/rhino/RhinoMesh.h"
#include "sdk/rhino/RhinoSurfaces.h"

namespace cadex::rhino {

/// A body with what the file knows about its display.
struct Body
{
    brep::Description description;
    /// The file's own meshes of the faces, not read yet: a byte for each face and, where it is 1, a mesh.
    std::optional<Chunk> renderMeshes;
    /// Or meshes of the body as a whole (of extrusions), read.
    std::vector<Mesh> meshes;
    std::size_t faceCount = 0; ///< of the file
    std::size_t lostFaces = 0; ///< that make no sense and are not in the description
};

/// What reading a body needs to know.
struct BodyContext
{
    double millimetres = 1;
    internal::AppearanceCache* appearances = nullptr; ///< for colours of single faces
};

bool IsBrep(const Uuid& classId);
Body ReadBrep(Chunk& data, const BodyContext& context);

bool IsExtrusion(const Uuid& classId);
Body ReadExtrusion(Chunk& data, const BodyContext& context);

/// A surface that is an object of its own.
Body BodyOf(const Surface& surface);

/// Reads the file's own meshes of a body: those of its faces, where there are all of them, or of the whole.
/// Empty when there are none.
std::vector<Mesh> ReadRenderMeshes(Body& body, double millimetres);

} // namespace cadex::rhino
