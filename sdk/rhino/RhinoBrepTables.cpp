#include "sdk/rhino/RhinoBrepTables.h"

#include <algorithm>
#include <numeric>

#include "sdk/rhino/RhinoTolerances.h"

namespace cadex::rhino {

namespace {

/// From this version of the writing library on, edges and trims have a domain of their own.
constexpr std::uint32_t ToolkitWithDomains = 200206180;

/// Unset values are far below zero.
double ToleranceOf(double value, double millimetres)
{
    const double claimed = value * millimetres;
    return claimed > tolerance::Coincident ? std::min(claimed, tolerance::LargestOfFile)
                                           : tolerance::Coincident;
}

/// Objects in a chunk: a count, and for each 1 and its wrapper, or 0.
template <typename Item, typename Read>
std::vector<Item> ReadObjects(Chunk& data, Read read)
{
    Chunk list = data.Child(code::Anonymous);
    list.ByteVersion();
    const std::size_t count = list.Count(4);
    std::vector<Item> items;
    for (std::size_t i = 0; i < count; ++i) {
        items.push_back(list.I32() != 0 ? read(list) : Item());
    }
    list.Finish();
    return items;
}

/// A table: versioned chunk, count, items.
template <typename Item, typename Read>
std::vector<Item> ReadTable(Chunk& data, std::size_t itemSize, Read read)
{
    Chunk table = data.Child(code::Anonymous);
    const int minor = table.ByteVersion().minor;
    const std::size_t count = table.Count(itemSize);
    std::vector<Item> items(count);
    for (Item& item : items) {
        read(table, item);
    }
    if constexpr (std::is_same_v<Item, FileFace>) {
        if (minor >= 1) {
            table.Skip(count * 16);
        }
        if (minor >= 2 && table.Bool()) {
            for (Item& item : items) {
                item.colour = table.U32();
            }
        }
    }
    table.Finish();
    return items;
}

} // namespace

void ReadBrepTables(Chunk& data, double millimetres, FileBrep& brep)
{
    const ArchiveFacts& facts = data.Facts();
    const bool hasDomains = facts.version >= 3 && facts.toolkit >= ToolkitWithDomains;
    brep.curves2d = ReadObjects<Curve>(data, [](Chunk& list) { return ReadCurveObject(list, 1); });
    brep.curves3d = ReadObjects<Curve>(data, [&](Chunk& list) { return ReadCurveObject(list, millimetres); });
    brep.surfaces =
        ReadObjects<Surface>(data, [&](Chunk& list) { return ReadSurfaceObject(list, millimetres); });
    brep.vertices = ReadTable<FileVertex>(data, 40, [&](Chunk& table, FileVertex& vertex) {
        table.Skip(4);
        const auto point = table.Doubles<3>();
        vertex.point = gp_Pnt(point[0] * millimetres, point[1] * millimetres, point[2] * millimetres);
        table.Skip(table.Count(4) * 4); // edges
        vertex.tolerance = ToleranceOf(table.Double(), millimetres);
    });
    brep.edges = ReadTable<FileEdge>(data, 48, [&](Chunk& table, FileEdge& edge) {
        table.Skip(4);
        edge.curve = table.I32();
        edge.isReversed = table.I32() != 0;
        edge.interval = table.Doubles<2>();
        edge.start = table.I32();
        edge.end = table.I32();
        edge.uses = static_cast<int>(table.Array<std::int32_t>().size());
        edge.tolerance = ToleranceOf(table.Double(), millimetres);
        if (hasDomains) {
            table.Skip(16);
        }
    });
    brep.trims = ReadTable<FileTrim>(data, 132, [&](Chunk& table, FileTrim& trim) {
        table.Skip(4);
        trim.curve = table.I32();
        trim.interval = table.Doubles<2>();
        trim.edge = table.I32();
        table.Skip(8); // vertices
        trim.isAgainstEdge = table.I32() != 0;
        table.Skip(12 + 16); // type, iso, loop; tolerances
        if (hasDomains) {
            table.Skip(16);
            trim.isReversed = table.U8() != 0;
            table.Skip(7 + 24);
        } else {
            table.Skip(48);
        }
        table.Skip(16);
    });
    brep.loops = ReadTable<FileLoop>(data, 16, [](Chunk& table, FileLoop& loop) {
        table.Skip(4);
        loop.trims = table.Array<std::int32_t>();
        table.Skip(8); // type, face
    });
    brep.faces = ReadTable<FileFace>(data, 20, [](Chunk& table, FileFace& face) {
        table.Skip(4);
        face.loops = table.Array<std::int32_t>();
        face.surface = table.I32();
        face.isReversed = table.I32() != 0;
        table.Skip(4); // material
    });
}

namespace {

/// The ends of edges that meet, two numbers an edge: its start and its end.
class EdgeEnds
{
public:
    explicit EdgeEnds(std::size_t edges) : myParent(2 * edges)
    {
        std::iota(myParent.begin(), myParent.end(), 0);
    }

    static int Of(int edge, bool isEnd) { return 2 * edge + (isEnd ? 1 : 0); }
    int RootOf(int end)
    {
        while (myParent[static_cast<std::size_t>(end)] != end) {
            int& parent = myParent[static_cast<std::size_t>(end)];
            parent = myParent[static_cast<std::size_t>(parent)];
            end = parent;
        }
        return end;
    }
    void Join(int a, int b) { myParent[static_cast<std::size_t>(RootOf(a))] = RootOf(b); }

private:
    std::vector<int> myParent;
};

/// Each edge begins where the one before it in a loop ends.
void FindVertices(FileBrep& brep)
{
    EdgeEnds ends(brep.edges.size());
    for (const FileLoop& loop : brep.loops) {
        std::vector<const FileTrim*> trims;
        for (const int index : loop.trims) {
            const FileTrim* trim = At(brep.trims, index);
            if (trim != nullptr && At(brep.edges, trim->edge) != nullptr) {
                trims.push_back(trim);
            }
        }
        for (std::size_t i = 0; i < trims.size(); ++i) {
            const FileTrim* next = trims[(i + 1) % trims.size()];
            ends.Join(EdgeEnds::Of(trims[i]->edge, !trims[i]->isAgainstEdge),
                      EdgeEnds::Of(next->edge, next->isAgainstEdge));
        }
    }
    std::vector<int> vertexOf(2 * brep.edges.size(), -1);
    for (std::size_t i = 0; i < brep.edges.size(); ++i) {
        FileEdge& edge = brep.edges[i];
        const Curve& curve = brep.curves3d[i];
        for (const bool isEnd : {false, true}) {
            int& vertex =
                vertexOf[static_cast<std::size_t>(ends.RootOf(EdgeEnds::Of(static_cast<int>(i), isEnd)))];
            const gp_Pnt point = curve.curve.IsNull() ? gp_Pnt() : isEnd ? curve.End() : curve.Start();
            if (vertex == -1) {
                vertex = static_cast<int>(brep.vertices.size());
                brep.vertices.push_back({point, tolerance::Coincident});
            }
            FileVertex& known = brep.vertices[static_cast<std::size_t>(vertex)];
            known.tolerance = std::max(known.tolerance, known.point.Distance(point));
            (isEnd ? edge.end : edge.start) = vertex;
        }
    }
}

/// A face with its loops, and the trims in them.
void ReadOldFace(Chunk& data, FileBrep& brep)
{
    FileFace face;
    face.surface = static_cast<int>(brep.faces.size());
    data.Skip(12); // index, material and another number
    face.isReversed = data.I32() != 0;
    data.Skip(48); // box
    const std::size_t loops = data.Count(44);
    for (std::size_t i = 0; i < loops; ++i) {
        FileLoop loop;
        data.Skip(8 + 32); // index, type, box
        const std::size_t trims = data.Count(41);
        for (std::size_t k = 0; k < trims; ++k) {
            const std::int32_t index = data.I32();
            data.Skip(4 + 1); // the other trim of the edge; whether this is its first
            const std::int32_t edge = data.I32();
            const bool isAgainstEdge = data.I32() != 0;
            data.Skip(8 + 16); // iso, type, tolerances
            if (At(brep.trims, index) == nullptr) {
                throw Unreadable("a loop of an old body has no such trim");
            }
            FileTrim& trim = brep.trims[static_cast<std::size_t>(index)];
            trim.edge = edge;
            trim.isAgainstEdge = isAgainstEdge;
            loop.trims.push_back(index);
        }
        face.loops.push_back(static_cast<int>(brep.loops.size()));
        brep.loops.push_back(std::move(loop));
    }
    brep.faces.push_back(std::move(face));
}

} // namespace

void ReadOldBrepTables(Chunk& data, double millimetres, FileBrep& brep)
{
    constexpr std::size_t LeastCurve = 60;
    const std::size_t faces = data.Count(LeastCurve);
    const std::size_t edges = data.Count(LeastCurve);
    data.Skip(4); // loops
    const std::size_t trims = data.Count(LeastCurve);
    const bool isClosed = data.I32() == 1;
    data.Skip(48); // box
    for (std::size_t i = 0; i < trims; ++i) {
        brep.curves2d.push_back(ReadCurve(PolyCurveId, data, 1));
        const Curve& curve = brep.curves2d.back();
        brep.trims.push_back({static_cast<int>(i), {curve.begin, curve.end}, -1, false, false});
    }
    for (std::size_t i = 0; i < edges; ++i) {
        brep.curves3d.push_back(ReadCurve(PolyCurveId, data, millimetres));
        const Curve& curve = brep.curves3d.back();
        FileEdge edge;
        edge.curve = static_cast<int>(i);
        edge.interval = {curve.begin, curve.end};
        brep.edges.push_back(edge);
    }
    for (std::size_t i = 0; i < faces; ++i) {
        brep.surfaces.push_back(ReadSurface(NurbsSurfaceId, data, millimetres));
    }
    for (std::size_t i = 0; i < faces; ++i) {
        ReadOldFace(data, brep);
    }
    brep.closure = isClosed ? FileBrep::Closure::Outward : FileBrep::Closure::Open;
    FindVertices(brep);
    data.SkipRest();
}

} // namespace cadex::rhino
