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

#include "sdk/rhino/RhinoBrepTables.h"

namespace cadex::rhino {

namespace {

constexpr Uuid BrepIds[] = {
    Uuid("60b5dbc5-e660-11d3-bfe4-0010830122f0"), Uuid("f06fc243-a32a-4608-9dd8-a7d2c4ce2a36"),
    Uuid("2d4cfedb-3e2a-11d4-800e-0010830122f0"), Uuid("0705fdef-3e2a-11d4-800e-0010830122f0")};

/// The file's own mesh of a face; `at` stands before it. The file's meshes follow the sense of the body's
/// face.
mesh::FaceTriangles ReadFaceMesh(Chunk at, double millimetres, bool isTurned)
{
    Mesh own;
    try {
        ReadObject(at, [&](const Uuid& classId, Chunk& data) {
            if (classId == MeshId) {
                own = ReadMesh(data, millimetres);
            } else {
                data.SkipRest();
            }
        });
    } catch (const Unreadable&) {
        return {};
    }
    mesh::FaceTriangles result;
    result.points = std::move(own.arrays.points);
    result.shared.assign(result.points.size(), mesh::NoIndex);
    result.normals = std::move(own.arrays.normals);
    if (result.normals.size() != result.points.size()) {
        result.normals.assign(result.points.size(), {});
    }
    if (isTurned) {
        for (ModelData_Vectorf& normal : result.normals) {
            normal = {-normal.X(), -normal.Y(), -normal.Z()};
        }
    }
    const std::vector<U32>& indices = own.arrays.indices;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const auto a = static_cast<int>(indices[i]);
        const auto b = static_cast<int>(indices[i + 1]);
        const auto c = static_cast<int>(indices[i + 2]);
        result.triangles.push_back({a, isTurned ? c : b, isTurned ? b : c});
    }
    return result;
}

/// From the tables of the file to a description.
class BrepDescriber
{
public:
    /// `meshes` are the file's own of the faces, as far as it has them.
    BrepDescriber(const FileBrep& brep, const std::vector<std::optional<Chunk>>& meshes,
                  const BodyContext& context, Body& body)
        : myBrep(brep), myMeshes(meshes), myContext(context), myBody(body), myTarget(body.description)
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
        const auto number = static_cast<std::size_t>(&source - myBrep.faces.data());
        if (const std::optional<Chunk>* mesh = At(myMeshes, static_cast<int>(number)); mesh && *mesh) {
            face.fileTriangles = [mesh = **mesh, file = myContext.file, isTurned = source.isReversed,
                                  millimetres = myContext.millimetres] {
                return ReadFaceMesh(mesh, millimetres, isTurned);
            };
        }
        if (isSound && !face.loops.empty()) {
            face.surface = source.surface;
            face.sameSense = !surface->IsFlipped();
        } else {
            ++myBody.lostFaces;
            face.loops.clear();
            if (!face.fileTriangles) {
                return;
            }
        }
        face.record = number + 1;
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
    const std::vector<std::optional<Chunk>>& myMeshes;
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
    FileBrep brep;
    if (version.major == 2) {
        ReadOldBrepTables(data, context.millimetres, brep);
        body.faceCount = brep.faces.size();
        BrepDescriber(brep, {}, context, body).Describe();
        return body;
    }
    if (version.major != 3) {
        data.SkipRest();
        body.lostFaces = 1;
        return body;
    }
    ReadBrepTables(data, context.millimetres, brep);
    std::vector<std::optional<Chunk>> meshes;
    data.Skip(48); // box
    if (version.minor >= 1) {
        Chunk list = data.Child(code::Anonymous);
        for (std::size_t i = 0; i < brep.faces.size(); ++i) {
            if (list.Bool()) {
                meshes.emplace_back(list);
                list.SkipChild();
            } else {
                meshes.emplace_back();
            }
        }
        data.SkipChild(); // meshes for analyses
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
    BrepDescriber(brep, meshes, context, body).Describe();
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
    if (surface.ring.IsNull() && !Handle(Geom_Plane)::DownCast(surface.surface).IsNull()) {
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
                surface.ring.IsNull()
                    ? new Geom_RectangularTrimmedSurface(surface.surface, u[0], u[1], v[0], v[1])
                    : surface.ring;
            face.surface = target.AddSurface(GeomConvert::SurfaceToBSplineSurface(bounded));
        } catch (const Standard_Failure&) {
            body.lostFaces = 1;
            return body;
        }
    }
    target.sheets.push_back(target.AddShell({{{target.AddFace(std::move(face)), true}}, false}));
    return body;
}

} // namespace cadex::rhino
