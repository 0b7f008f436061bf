// The tables of a B-rep as they stand in a 3DM file.
#pragma once

#include <array>
#include <vector>

#include "sdk/rhino/RhinoSurfaces.h"
#include "sdk/rhino/RhinoTolerances.h"

namespace cadex::rhino {

struct FileVertex
{
    gp_Pnt point;
    double tolerance = tolerance::Coincident;
};

struct FileEdge
{
    int curve = -1;
    bool isReversed = false; ///< against its curve
    std::array<double, 2> interval{};
    int start = -1;
    int end = -1;
    double tolerance = tolerance::Coincident;
    int uses = 0;
};

struct FileTrim
{
    int curve = -1;
    std::array<double, 2> interval{}; ///< of the curve
    int edge = -1;
    bool isAgainstEdge = false;
    bool isReversed = false; ///< against its curve
};

struct FileLoop
{
    std::vector<int> trims;
};

struct FileFace
{
    std::vector<int> loops;
    int surface = -1;
    bool isReversed = false;
    PackedColour colour = UnsetColour;
};

struct FileBrep
{
    enum class Closure
    {
        Unknown = 0,
        Outward = 1,
        Inward = 2,
        Open = 3
    };
    std::vector<Curve> curves2d;
    std::vector<Curve> curves3d;
    std::vector<Surface> surfaces;
    std::vector<FileVertex> vertices;
    std::vector<FileEdge> edges;
    std::vector<FileTrim> trims;
    std::vector<FileLoop> loops;
    std::vector<FileFace> faces;
    Closure closure = Closure::Unknown;
};

/// The item, or null where there is none of that number.
template <typename Item>
const Item* At(const std::vector<Item>& items, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < items.size()
               ? &items[static_cast<std::size_t>(index)]
               : nullptr;
}

/// Reads the tables of versions 3 and later of the class.
void ReadBrepTables(Chunk& data, double millimetres, FileBrep& brep);

/// Reads those of version 2, which files of version 2 have: no vertices, an edge and a trim for each curve, a
/// spline for each face. Vertices come from how the edges follow each other in the loops.
void ReadOldBrepTables(Chunk& data, double millimetres, FileBrep& brep);

} // namespace cadex::rhino
