#include "sdk/rhino/RhinoBodies.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <Bnd_Box.hxx>
#include <GeomConvert.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_RectangularTrimmedSurface.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColgp_Array1OfPnt2d.hxx>

namespace cadex::rhino {

namespace {

constexpr Uuid BrepIds[] = {
    Uuid("60b5dbc5-e660-11d3-bfe4-0010830122f0"), Uuid("f06fc243-a32a-4608-9dd8-a7d2c4ce2a36"),
    Uuid("2d4cfedb-3e2a-11d4-800e-0010830122f0"), Uuid("0705fdef-3e2a-11d4-800e-0010830122f0")};

/// From this version of the writing library on, edges and trims have a domain of their own.
constexpr std::uint32_t LibraryWithDomains = 200206180;

constexpr double LeastTolerance = 1e-7;
constexpr double LargestTolerance = 1; ///< of a vertex or edge, as a fraction of nothing: millimetres

/// Unset values are far below zero.
double ToleranceOf(double value, double millimetres)
{
    const double tolerance = value * millimetres;
    return tolerance > LeastTolerance ? std::min(tolerance, LargestTolerance) : LeastTolerance;
}

struct FileVertex
{
    gp_Pnt point;
    double tolerance = LeastTolerance;
};

struct FileEdge
{
    int curve = -1;
    bool isReversed = false; ///< against its curve
    std::array<double, 2> interval{};
    int start = -1;
    int end = -1;
    double tolerance = LeastTolerance;
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

/// The tables of a B-rep as they stand in the file.
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

template <typename Item>
const Item* At(const std::vector<Item>& items, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < items.size()
               ? &items[static_cast<std::size_t>(index)]
               : nullptr;
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

void ReadTables(Chunk& data, double millimetres, FileBrep& brep)
{
    const ArchiveFacts& facts = data.Facts();
    const bool hasDomains = facts.version >= 3 && facts.library >= LibraryWithDomains;
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

/// From the tables of the file to a description.
class BrepDescriber
{
public:
    BrepDescriber(const FileBrep& brep, const BodyContext& context, Body& body)
        : myBrep(brep), myContext(context), myBody(body), myTarget(body.description)
    {
    }

    void Describe()
    {
        for (const FileVertex& vertex : myBrep.vertices) {
            myTarget.AddVertex(vertex.point, vertex.tolerance);
        }
        for (const FileEdge& edge : myBrep.edges) {
            AddEdge(edge);
        }
        for (const Surface& surface : myBrep.surfaces) {
            myTarget.AddSurface(surface.surface);
        }
        for (const FileFace& face : myBrep.faces) {
            AddFace(face);
        }
        AddShells();
    }

private:
    /// Ends in the sense of the curve, not of the file's edge.
    void AddEdge(const FileEdge& source)
    {
        brep::Edge edge;
        const Curve* curve = At(myBrep.curves3d, source.curve);
        const bool isSound =
            curve != nullptr && !curve->curve.IsNull() && At(myBrep.vertices, source.start) != nullptr &&
            At(myBrep.vertices, source.end) != nullptr && source.interval[0] < source.interval[1];
        if (isSound) {
            edge.curve = curve->curve;
            edge.first = curve->At(source.interval[0]);
            edge.last = curve->At(source.interval[1]);
            edge.start = source.isReversed ? source.end : source.start;
            edge.end = source.isReversed ? source.start : source.end;
        }
        edge.tolerance = source.tolerance;
        edge.record = myTarget.edges.size();
        myIsSoundEdge.push_back(isSound);
        myTarget.AddEdge(std::move(edge));
    }

    void AddFace(const FileFace& source)
    {
        const Surface* surface = At(myBrep.surfaces, source.surface);
        brep::Face face;
        bool isSound = surface != nullptr && !surface->surface.IsNull();
        for (std::size_t i = 0; i < source.loops.size() && isSound; ++i) {
            isSound = AddLoop(source.loops[i], *surface, face);
        }
        if (!isSound || face.loops.empty()) {
            ++myBody.lostFaces;
            return;
        }
        face.surface = source.surface;
        face.sameSense = !surface->IsFlipped();
        face.record = static_cast<std::uint64_t>(&source - myBrep.faces.data()) + 1;
        if (source.colour != UnsetColour && myContext.appearances != nullptr) {
            face.appearance = myContext.appearances->Of(
                internal::Colour{static_cast<float>(source.colour & 255) / 255.F,
                                 static_cast<float>(source.colour >> 8 & 255) / 255.F,
                                 static_cast<float>(source.colour >> 16 & 255) / 255.F, 1});
        }
        myTarget.AddFace(std::move(face));
        myIsTurned.push_back(source.isReversed);
    }

    /// Trims without an edge stand where the surface comes together in a point; nothing is lost without them.
    bool AddLoop(int index, const Surface& surface, brep::Face& face)
    {
        const FileLoop* source = At(myBrep.loops, index);
        if (source == nullptr) {
            return false;
        }
        brep::Loop loop;
        for (const int trimIndex : source->trims) {
            const FileTrim* trim = At(myBrep.trims, trimIndex);
            if (trim == nullptr) {
                return false;
            }
            if (trim->edge == -1) {
                continue;
            }
            const FileEdge* edge = At(myBrep.edges, trim->edge);
            if (edge == nullptr || !myIsSoundEdge[static_cast<std::size_t>(trim->edge)]) {
                return false;
            }
            const bool isForward = trim->isAgainstEdge == edge->isReversed;
            loop.uses.push_back({trim->edge, isForward, OnSurface(*trim, isForward, surface)});
        }
        if (!loop.uses.empty()) {
            face.loops.push_back(std::move(loop));
        }
        return true;
    }

    /// The trim's curve in the kernel's parameters of the surface and over the range of the edge; null on
    /// elementary surfaces, and where it makes no sense.
    Handle(Geom2d_Curve) OnSurface(const FileTrim& trim, bool isForward, const Surface& surface) const
    {
        const Curve* curve = At(myBrep.curves2d, trim.curve);
        if (surface.isElementary || curve == nullptr || curve->curve.IsNull() ||
            !(trim.interval[0] < trim.interval[1])) {
            return {};
        }
        const brep::Edge& edge = myTarget.edges[static_cast<std::size_t>(trim.edge)];
        const Handle(Geom_BSplineCurve) spline = SplineOf(*curve);
        const bool isAscending = isForward != trim.isReversed;
        const double factor = (edge.last - edge.first) / (trim.interval[1] - trim.interval[0]);
        const auto parameterOf = [&](double knot) {
            return edge.first + factor * (isAscending ? knot - trim.interval[0] : trim.interval[1] - knot);
        };
        const int poles = spline->NbPoles();
        const int knots = spline->NbKnots();
        TColgp_Array1OfPnt2d points(1, poles);
        TColStd_Array1OfReal weights(1, poles);
        for (int i = 1; i <= poles; ++i) {
            const int from = isAscending ? i : poles + 1 - i;
            points(i) = surface.Map(spline->Pole(from).X(), spline->Pole(from).Y());
            weights(i) = spline->Weight(from);
        }
        TColStd_Array1OfReal values(1, knots);
        TColStd_Array1OfInteger multiplicities(1, knots);
        for (int i = 1; i <= knots; ++i) {
            const int from = isAscending ? i : knots + 1 - i;
            values(i) = parameterOf(spline->Knot(from));
            multiplicities(i) = spline->Multiplicity(from);
        }
        if (spline->IsRational()) {
            return new Geom2d_BSplineCurve(points, weights, values, multiplicities, spline->Degree());
        }
        return new Geom2d_BSplineCurve(points, values, multiplicities, spline->Degree());
    }

    /// Faces that hang together by edges are one shell.
    void AddShells()
    {
        std::vector<int> groupOf(myTarget.faces.size());
        std::iota(groupOf.begin(), groupOf.end(), 0);
        const auto rootOf = [&](int face) {
            while (groupOf[static_cast<std::size_t>(face)] != face) {
                int& parent = groupOf[static_cast<std::size_t>(face)];
                parent = groupOf[static_cast<std::size_t>(parent)];
                face = parent;
            }
            return face;
        };
        std::vector<int> faceOfEdge(myTarget.edges.size(), -1);
        std::vector<int> uses(myTarget.edges.size(), 0);
        for (std::size_t i = 0; i < myTarget.faces.size(); ++i) {
            for (const brep::Loop& loop : myTarget.faces[i].loops) {
                for (const brep::EdgeUse& use : loop.uses) {
                    int& first = faceOfEdge[static_cast<std::size_t>(use.edge)];
                    ++uses[static_cast<std::size_t>(use.edge)];
                    if (first == -1) {
                        first = static_cast<int>(i);
                    } else {
                        groupOf[static_cast<std::size_t>(rootOf(static_cast<int>(i)))] = rootOf(first);
                    }
                }
            }
        }
        const bool isClosed =
            myBody.lostFaces == 0 && myBrep.closure != FileBrep::Closure::Open &&
            std::all_of(uses.begin(), uses.end(), [](int count) { return count == 0 || count == 2; });
        const bool isInward = myBrep.closure == FileBrep::Closure::Inward;
        std::vector<int> shellOf(groupOf.size(), -1);
        std::vector<Bnd_Box> boxes;
        for (std::size_t i = 0; i < groupOf.size(); ++i) {
            int& shell = shellOf[static_cast<std::size_t>(rootOf(static_cast<int>(i)))];
            if (shell == -1) {
                shell = myTarget.AddShell({{}, isClosed});
                boxes.emplace_back();
            }
            myTarget.shells[static_cast<std::size_t>(shell)].faces.push_back(
                {static_cast<int>(i), myIsTurned[i] == isInward});
            Enclose(myTarget.faces[i], boxes[static_cast<std::size_t>(shell)]);
        }
        if (isClosed) {
            AddSolids(boxes);
        } else {
            myTarget.sheets.resize(boxes.size());
            std::iota(myTarget.sheets.begin(), myTarget.sheets.end(), 0);
        }
    }

    void Enclose(const brep::Face& face, Bnd_Box& box) const
    {
        for (const brep::Loop& loop : face.loops) {
            for (const brep::EdgeUse& use : loop.uses) {
                const brep::Edge& edge = myTarget.edges[static_cast<std::size_t>(use.edge)];
                box.Add(myTarget.vertices[static_cast<std::size_t>(edge.start)].point);
                box.Add(edge.curve->Value((edge.first + edge.last) / 2));
            }
        }
    }

    /// A shell within the box of a larger one is taken for a cavity in it.
    void AddSolids(const std::vector<Bnd_Box>& boxes)
    {
        std::vector<int> order(boxes.size());
        std::iota(order.begin(), order.end(), 0);
        const auto boxOf = [&](int shell) -> const Bnd_Box& {
            return boxes[static_cast<std::size_t>(shell)];
        };
        std::stable_sort(order.begin(), order.end(),
                         [&](int a, int b) { return boxOf(a).SquareExtent() > boxOf(b).SquareExtent(); });
        for (const int shell : order) {
            const auto around =
                std::find_if(myTarget.solids.begin(), myTarget.solids.end(), [&](const brep::Solid& solid) {
                    return !boxOf(solid.outer).IsOut(boxOf(shell).CornerMin()) &&
                           !boxOf(solid.outer).IsOut(boxOf(shell).CornerMax());
                });
            if (around == myTarget.solids.end()) {
                myTarget.solids.push_back({shell, {}});
            } else {
                around->voids.push_back(shell);
            }
        }
    }

    const FileBrep& myBrep;
    const BodyContext& myContext;
    Body& myBody;
    brep::Description& myTarget;
    std::vector<bool> myIsSoundEdge; ///< by edge
    std::vector<bool> myIsTurned;    ///< by face of the description: runs against the file's surface
};

} // namespace

bool IsBrep(const Uuid& classId)
{
    return std::find(std::begin(BrepIds), std::end(BrepIds), classId) != std::end(BrepIds);
}

Body ReadBrep(Chunk& data, const BodyContext& context)
{
    Body body;
    const Chunk::Version version = data.ByteVersion();
    if (version.major != 3) {
        data.SkipRest();
        body.lostFaces = 1;
        return body;
    }
    FileBrep brep;
    ReadTables(data, context.millimetres, brep);
    data.Skip(48); // box
    if (version.minor >= 1) {
        body.renderMeshes = data.Child(code::Anonymous);
        data.SkipChild();
    }
    if (version.minor >= 2) {
        const int closure = data.I32();
        brep.closure = closure >= 0 && closure <= 3 ? static_cast<FileBrep::Closure>(closure)
                                                    : FileBrep::Closure::Unknown;
    }
    if (version.minor >= 3) {
        data.SkipChild(); // regions
    }
    if (version.minor > 3) {
        data.SkipRest();
    }
    body.faceCount = brep.faces.size();
    BrepDescriber(brep, context, body).Describe();
    return body;
}

Body BodyOf(const Surface& surface)
{
    Body body;
    body.faceCount = 1;
    if (surface.surface.IsNull()) {
        body.lostFaces = 1;
        return body;
    }
    brep::Description& target = body.description;
    brep::Face face;
    face.sameSense = !surface.IsFlipped();
    const gp_Pnt2d from = surface.Map(surface.begin[0], surface.begin[1]);
    const gp_Pnt2d to = surface.Map(surface.end[0], surface.end[1]);
    const double u[2] = {std::min(from.X(), to.X()), std::max(from.X(), to.X())};
    const double v[2] = {std::min(from.Y(), to.Y()), std::max(from.Y(), to.Y())};
    if (!Handle(Geom_Plane)::DownCast(surface.surface).IsNull()) {
        int corners[4];
        for (int i = 0; i < 4; ++i) {
            corners[i] = target.AddVertex(surface.surface->Value(u[i == 1 || i == 2 ? 1 : 0], v[i / 2]));
        }
        brep::Loop loop;
        for (int i = 0; i < 4; ++i) {
            loop.uses.push_back({target.AddLine(corners[i], corners[(i + 1) % 4]), true, {}});
        }
        face.loops.push_back(std::move(loop));
        face.surface = target.AddSurface(surface.surface);
        face.sameSense = true;
    } else if (!Handle(Geom_BSplineSurface)::DownCast(surface.surface).IsNull()) {
        face.surface = target.AddSurface(surface.surface);
    } else {
        try {
            const Handle(Geom_Surface) bounded =
                new Geom_RectangularTrimmedSurface(surface.surface, u[0], u[1], v[0], v[1]);
            face.surface = target.AddSurface(GeomConvert::SurfaceToBSplineSurface(bounded));
        } catch (const Standard_Failure&) {
            body.lostFaces = 1;
            return body;
        }
    }
    target.sheets.push_back(target.AddShell({{{target.AddFace(std::move(face)), true}}, false}));
    return body;
}

std::vector<Mesh> ReadRenderMeshes(Body& body, double millimetres)
{
    if (!body.renderMeshes) {
        return body.meshes;
    }
    std::vector<Mesh> meshes;
    Chunk chunk = *body.renderMeshes;
    for (std::size_t face = 0; face < body.faceCount; ++face) {
        if (!chunk.Bool()) {
            return {};
        }
        ReadObject(chunk, [&](const Uuid& classId, Chunk& data) {
            if (classId == MeshId) {
                meshes.push_back(ReadMesh(data, millimetres));
            } else {
                data.SkipRest();
            }
        });
    }
    return meshes.size() == body.faceCount ? meshes : std::vector<Mesh>();
}

} // namespace cadex::rhino
