#pragma once

#include "host/enumLengthUnit.h"

#include <functional>
#include <string>
#include <vector>

namespace Zemtar {
class CZemtarDocument;
}

/// Formats for renderers, the web and printers, which need no CAD engine.
enum class SceneFormat
{
    None,
    GLB, ///< glTF 2.0 in one file: metres, y up
    OBJ, ///< with an MTL file beside it
    PLY, ///< binary, little-endian
    STL  ///< binary
};

/// How GLB's vertices and indices are packed.
enum class GlbPacking
{
    None,     ///< single precision
    Quantize, ///< 16 bits a coordinate, 8 a normal's (KHR_mesh_quantization)
    Meshopt   ///< the same, and compressed (EXT_meshopt_compression)
};

/// Tells whether this build has the compressor for `GlbPacking::Meshopt`.
bool HasMeshopt();

struct SceneExportSettings
{
    SceneFormat format = SceneFormat::GLB;
    Zemtar::enumLengthUnit unit = Zemtar::eLengthUnitMillimetre; ///< GLB has metres whatever it says
    GlbPacking packing = GlbPacking::None;                       ///< GLB alone
    /// Is told the fraction that is written, 0 to 1; false ends the export as a failure.
    std::function<bool(double fraction)> progress = {};
};

/// Writes a document to a file, which is whole or not there; with OBJ, both files. The document is streamed:
/// beside it, memory holds a few dozen bytes a node and a shape, converted pictures and, for
/// `GlbPacking::Meshopt`, one mesh at a time.
///
/// GLB keeps the tree with its names and metadata (as extras), shapes once however many nodes show them, and
/// turns z up into y up. The other formats place each instance in the world; z stays up. Colours are those
/// that the author gave.
///
/// Triangles and segments at coordinates that are no places are left out, and so are subtrees whose transform
/// is not finite, and pictures that cannot be read.
///
/// `file`: UTF-8. Result: what was left out, a line each. A document without a triangle or segment that the
/// format takes, a target that cannot be written, and more than the format's counters hold is a
/// std::runtime_error; nothing is written then.
std::vector<std::string> ExportScene(const Zemtar::CZemtarDocument& document, const std::string& file,
                                     const SceneExportSettings& settings);
