// Extrusions: a profile of one outer and any number of inner curves, swept along a straight path and cut off
// by planes that need not lie across it.
#include "sdk/rhino/RhinoBodies.h"

#include <algorithm>
#include <cmath>

#include <Geom2d_Line.hxx>
#include <Geom_Circle.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Line.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Standard_Failure.hxx>
#include <gp_GTrsf.hxx>

#include "sdk/rhino/RhinoTolerances.h"

namespace cadex::rhino {

namespace {

constexpr Uuid ExtrusionId("36f53175-72b8-4d47-bf1f-b4e6fc24f4b9");

using Loop = std::vector<Curve>; ///< in the plane z = 0, end to end

void AddLeaves(const CurveTree& tree, Loop& loop)
{
    for (const CurveTree& piece : tree.pieces) {
        AddLeaves(piece, loop);
    }
    if (!tree.pieces.empty()) {
        return;
    }
    if (tree.curve.corners.size() < 3) {
        loop.push_back(tree.curve);
        return;
    }
    for (std::size_t i = 0; i + 1 < tree.curve.corners.size(); ++i) {
        const gp_Pnt& a = tree.curve.corners[i];
        const gp_Pnt& b = tree.curve.corners[i + 1];
        const double length = a.Distance(b);
        if (length > tolerance::Corner) {
            loop.push_back({new Geom_Line(a, gp_Dir(gp_Vec(a, b))), 0, length, 0, length, {a, b}});
        }
    }
}

/// Twice the area that a loop goes round counter-clockwise.
double TwiceArea(const Loop& loop)
{
    constexpr int Samples = 16;
    double area = 0;
    for (const Curve& curve : loop) {
        gp_Pnt last = curve.Start();
        for (int i = 1; i <= Samples; ++i) {
            const gp_Pnt next = curve.curve->Value(curve.first + (curve.last - curve.first) * i / Samples);
            area += last.X() * next.Y() - last.Y() * next.X();
            last = next;
        }
    }
    return area;
}

/// The plane that cuts the sweep off, in the coordinates of the profile: z = a x + b y + height.
struct Cut
{
    double height = 0;
    double a = 0;
    double b = 0;

    bool IsAcross() const { return a == 0 && b == 0; }
    gp_Pnt On(const gp_Pnt& point) const
    {
        return {point.X(), point.Y(), a * point.X() + b * point.Y() + height};
    }
};

class ExtrusionDescriber
{
public:
    ExtrusionDescriber(const gp_Ax3& frame, const Cut& start, const Cut& end, brep::Description& target)
        : myFrame(frame), myCuts{start, end}, myTarget(target)
    {
        myPlacement.SetTransformation(frame, gp_Ax3());
    }

    void Describe(const std::vector<Loop>& loops, const bool (&isCapped)[2])
    {
        brep::Shell shell;
        bool isClosed = true;
        for (std::size_t i = 0; i < loops.size(); ++i) {
            isClosed = AddSides(loops[i], i > 0, shell) && isClosed;
        }
        for (int side = 0; side < 2; ++side) {
            if (isCapped[side] && isClosed) {
                AddCap(side, shell);
            }
        }
        shell.closed = isClosed && isCapped[0] && isCapped[1];
        const bool isSolid = shell.closed;
        const int number = myTarget.AddShell(std::move(shell));
        if (isSolid) {
            myTarget.solids.push_back({number, {}});
        } else {
            myTarget.sheets.push_back(number);
        }
    }

private:
    gp_Pnt Placed(const gp_Pnt& point) const { return point.Transformed(myPlacement); }

    /// An edge along the curve on one of the cuts.
    int AddEdge(const Curve& curve, int side, int start, int end)
    {
        const Cut& cut = myCuts[side];
        brep::Edge edge;
        edge.start = start;
        edge.end = end;
        if (curve.corners.size() == 2) {
            return myTarget.AddEdge(std::move(edge));
        }
        if (cut.IsAcross()) {
            gp_Trsf lift;
            lift.SetTranslation(gp_Vec(0, 0, cut.height));
            edge.curve = Handle(Geom_Curve)::DownCast(curve.curve->Transformed(myPlacement * lift));
            edge.first = curve.first;
            edge.last = curve.last;
        } else {
            const Handle(Geom_BSplineCurve) spline = SplineOf(curve);
            for (int i = 1; i <= spline->NbPoles(); ++i) {
                spline->SetPole(i, Placed(cut.On(spline->Pole(i))));
            }
            edge.curve = spline;
            edge.first = curve.begin;
            edge.last = curve.end;
        }
        return myTarget.AddEdge(std::move(edge));
    }

    /// A straight edge between the cuts.
    int AddRise(int from, int to)
    {
        const gp_Pnt& a = myTarget.vertices[static_cast<std::size_t>(from)].point;
        const gp_Pnt& b = myTarget.vertices[static_cast<std::size_t>(to)].point;
        brep::Edge edge;
        edge.curve = new Geom_Line(a, gp_Dir(gp_Vec(a, b)));
        edge.last = a.Distance(b);
        edge.start = from;
        edge.end = to;
        return myTarget.AddEdge(std::move(edge));
    }

    int SurfaceOver(const Curve& curve)
    {
        const gp_Dir& up = myFrame.Direction();
        const gp_Pnt start = Placed(curve.Start());
        if (curve.corners.size() == 2) {
            const gp_Vec along(start, Placed(curve.End()));
            return myTarget.AddSurface(new Geom_Plane(gp_Ax3(start, gp_Dir(along.Crossed(gp_Vec(up))), up)));
        }
        const Handle(Geom_Curve) placed = Handle(Geom_Curve)::DownCast(curve.curve->Transformed(myPlacement));
        const Handle(Geom_Circle) circle = Handle(Geom_Circle)::DownCast(placed);
        if (!circle.IsNull()) {
            const gp_Circ base = circle->Circ();
            return myTarget.AddSurface(new Geom_CylindricalSurface(
                gp_Ax3(base.Location(), up, base.XAxis().Direction()), base.Radius()));
        }
        return myTarget.AddSurface(new Geom_SurfaceOfLinearExtrusion(placed, up));
    }

    /// Whether the surface's normal lies to the right of the curve, seen from the end of the path.
    static bool IsRightHanded(const Curve& curve)
    {
        const Handle(Geom_Circle) circle = Handle(Geom_Circle)::DownCast(curve.curve);
        return circle.IsNull() || circle->Circ().Axis().Direction().Z() > 0;
    }

    /// False when the loop is open.
    bool AddSides(const Loop& loop, bool isInner, brep::Shell& shell)
    {
        const std::size_t count = loop.size();
        const bool isClosed = loop.front().Start().Distance(loop.back().End()) < tolerance::Corner;
        const bool runsRight = !isClosed || (TwiceArea(loop) > 0) != isInner;
        std::vector<int> corners[2];
        std::vector<int> rises;
        for (std::size_t i = 0; i < count + (isClosed ? 0 : 1); ++i) {
            const gp_Pnt at = i < count ? loop[i].Start() : loop.back().End();
            for (int side = 0; side < 2; ++side) {
                corners[side].push_back(myTarget.AddVertex(Placed(myCuts[side].On(at))));
            }
            rises.push_back(AddRise(corners[0].back(), corners[1].back()));
        }
        brep::Loop outlines[2];
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t next = (i + 1) % corners[0].size();
            int edges[2];
            for (int side = 0; side < 2; ++side) {
                edges[side] = AddEdge(loop[i], side, corners[side][i], corners[side][next]);
                outlines[side].uses.push_back({edges[side], true, {}});
            }
            brep::Face face;
            face.surface = SurfaceOver(loop[i]);
            face.sameSense = IsRightHanded(loop[i]);
            face.loops.push_back({{{edges[0], true, {}},
                                   {rises[next], true, {}},
                                   {edges[1], false, {}},
                                   {rises[i], false, {}}},
                                  brep::None});
            AddCurvesOnSurface(loop[i], face);
            shell.faces.push_back({myTarget.AddFace(std::move(face)), runsRight});
        }
        for (int side = 0; side < 2; ++side) {
            if (!runsRight) {
                std::reverse(outlines[side].uses.begin(), outlines[side].uses.end());
                for (brep::EdgeUse& use : outlines[side].uses) {
                    use.forward = false;
                }
            }
            myOutlines[side].push_back(std::move(outlines[side]));
        }
        return isClosed;
    }

    /// On a general swept surface u is the curve's parameter and v the height above the profile's plane.
    void AddCurvesOnSurface(const Curve& curve, brep::Face& face) const
    {
        const auto& surface = myTarget.surfaces[static_cast<std::size_t>(face.surface)];
        if (!myCuts[0].IsAcross() || !myCuts[1].IsAcross() ||
            Handle(Geom_SurfaceOfLinearExtrusion)::DownCast(surface).IsNull()) {
            return;
        }
        std::vector<brep::EdgeUse>& uses = face.loops.front().uses;
        for (int side = 0; side < 2; ++side) {
            uses[side == 0 ? 0 : 2].curveOnSurface =
                new Geom2d_Line(gp_Pnt2d(0, myCuts[side].height), gp_Dir2d(1, 0));
        }
        uses[1].curveOnSurface = new Geom2d_Line(gp_Pnt2d(curve.last, myCuts[0].height), gp_Dir2d(0, 1));
        uses[3].curveOnSurface = new Geom2d_Line(gp_Pnt2d(curve.first, myCuts[0].height), gp_Dir2d(0, 1));
    }

    void AddCap(int side, brep::Shell& shell)
    {
        const Cut& cut = myCuts[side];
        const gp_Dir normal = gp_Dir(-cut.a, -cut.b, 1).Transformed(myPlacement);
        brep::Face face;
        face.surface = myTarget.AddSurface(new Geom_Plane(gp_Ax3(Placed(cut.On(gp_Pnt())), normal)));
        face.loops = myOutlines[side];
        shell.faces.push_back({myTarget.AddFace(std::move(face)), side == 1});
    }

    gp_Ax3 myFrame;
    gp_Trsf myPlacement; ///< from the coordinates of the profile
    Cut myCuts[2];
    brep::Description& myTarget;
    std::vector<brep::Loop> myOutlines[2]; ///< counter-clockwise about the path, inner ones clockwise
};

/// The plane across the path, or that of a mitred end, whose normal the file gives in the profile's
/// coordinates.
Cut CutOf(double height, bool isMitred, const double* normal)
{
    Cut cut;
    cut.height = height;
    if (isMitred && std::abs(normal[2]) > 1e-3 && std::isfinite(normal[0]) && std::isfinite(normal[1])) {
        cut.a = -normal[0] / normal[2];
        cut.b = -normal[1] / normal[2];
    }
    return cut;
}

/// What the file says about an extrusion.
struct FileExtrusion
{
    CurveTree profile;
    std::array<double, 6> path{};
    std::array<double, 2> interval{}; ///< of the path that is used, 0 to 1
    std::array<double, 3> up{};
    bool isMitred[2] = {false, false};
    std::array<double, 6> normals{};
    int profiles = 1;
    bool isCapped[2] = {false, false};
};

void Describe(const FileExtrusion& source, double millimetres, Body& body)
{
    const auto scaled = [&](const double* xyz) {
        return gp_Pnt(xyz[0] * millimetres, xyz[1] * millimetres, xyz[2] * millimetres);
    };
    const gp_Pnt from = scaled(source.path.data());
    const gp_Vec path(from, scaled(source.path.data() + 3));
    const gp_Vec up(source.up[0], source.up[1], source.up[2]);
    std::vector<Loop> loops;
    if (source.profiles > 1) {
        for (const CurveTree& piece : source.profile.pieces) {
            AddLeaves(piece, loops.emplace_back());
        }
    } else {
        AddLeaves(source.profile, loops.emplace_back());
    }
    const auto isSound = [](const Loop& loop) {
        return !loop.empty() && std::none_of(loop.begin(), loop.end(),
                                             [](const Curve& curve) { return curve.curve.IsNull(); });
    };
    if (loops.empty() || !std::all_of(loops.begin(), loops.end(), isSound) ||
        !(path.Magnitude() > tolerance::Corner) || !(up.Magnitude() > 0.1) ||
        !(up.Crossed(path).Magnitude() > tolerance::Corner) || !(source.interval[0] < source.interval[1])) {
        body.lostFaces = 1;
        return;
    }
    // y is up, z along the path
    const gp_Ax3 frame(from, gp_Dir(path), gp_Dir(up.Crossed(path)));
    ExtrusionDescriber(
        frame, CutOf(source.interval[0] * path.Magnitude(), source.isMitred[0], source.normals.data()),
        CutOf(source.interval[1] * path.Magnitude(), source.isMitred[1], source.normals.data() + 3),
        body.description)
        .Describe(loops, source.isCapped);
}

} // namespace

bool IsExtrusion(const Uuid& classId)
{
    return classId == ExtrusionId;
}

Body ReadExtrusion(Chunk& data, const BodyContext& context)
{
    Chunk::Version version;
    Chunk chunk = data.Versioned(version);
    FileExtrusion source;
    source.profile = ReadCurveTree(chunk, context.millimetres);
    source.path = chunk.Doubles<6>();
    source.interval = chunk.Doubles<2>();
    source.up = chunk.Doubles<3>();
    source.isMitred[0] = chunk.Bool();
    source.isMitred[1] = chunk.Bool();
    source.normals = chunk.Doubles<6>();
    chunk.Skip(16 + 1); // domain of the path, transposed
    if (version.minor >= 1) {
        source.profiles = chunk.I32();
    }
    if (version.minor >= 2) {
        source.isCapped[0] = chunk.Bool();
        source.isCapped[1] = chunk.Bool();
    }
    Body body;
    body.faceCount = 1;
    if (version.minor >= 3) {
        Chunk meshes = chunk.Versioned(version);
        while (meshes.Bool()) {
            Chunk mesh = meshes.Versioned(version);
            mesh.Skip(16);
            ReadObject(mesh, [&](const Uuid& classId, Chunk& meshData) {
                if (classId == MeshId && !body.mesh) {
                    body.mesh = ReadMesh(meshData, context.millimetres);
                } else {
                    meshData.SkipRest();
                }
            });
        }
    }
    chunk.SkipRest();
    try {
        Describe(source, context.millimetres, body);
    } catch (const Standard_Failure&) {
        body.lostFaces = 1;
    }
    if (body.lostFaces > 0) {
        body.description = {};
    } else {
        body.mesh.reset();
    }
    return body;
}

} // namespace cadex::rhino
