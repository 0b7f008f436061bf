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
    /// The file's own mesh of a body that is not described face by face (an extrusion).
    std::optional<Mesh> mesh;
    std::size_t faceCount = 0; ///< of the file
    /// Those that make no sense: not in the description, or with the file's own triangles alone.
    std::size_t lostFaces = 0;
};

/// What reading a body needs to know.
struct BodyContext
{
    double millimetres = 1;
    internal::AppearanceCache* appearances = nullptr; ///< for colours of single faces
    std::shared_ptr<const void> file = nullptr; ///< keeps the bytes for meshes that are read when asked for
};

bool IsBrep(const Uuid& classId);
Body ReadBrep(Chunk& data, const BodyContext& context);

bool IsExtrusion(const Uuid& classId);
Body ReadExtrusion(Chunk& data, const BodyContext& context);

/// A surface that is an object of its own.
Body BodyOf(const Surface& surface);

} // namespace cadex::rhino
