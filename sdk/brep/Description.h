// A boundary representation as any format gives it: vertices, edges, surfaces, faces with their loops, and
// what the faces bound. Formats fill it; the builder makes kernel shapes from it, the tessellator triangles.
//
//     Description body;
//     const int a = body.AddVertex({0, 0, 0}), b = body.AddVertex({10, 0, 0});
//     const int edge = body.AddLine(a, b);
//     const int plane = body.AddSurface(new Geom_Plane(gp_Pln()));
//     Face face{.surface = plane, .loops = {Loop{.uses = {{.edge = edge, .forward = true}, ...}}}};
//     body.sheets.push_back(body.AddShell({.faces = {{.face = body.AddFace(std::move(face))}}}));
//
// All lengths are millimetres, all angles radians, whatever the file's units are. Numbers of vertices, edges,
// surfaces, faces and shells are places in the tables, counted from 0; faces that share an edge or a surface
// name the same number.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include <Geom2d_Curve.hxx>
#include <Geom_Curve.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_Pnt.hxx>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/ModelData_Appearance.hxx>

#include "sdk/mesh/TriangleAssembly.h"

namespace cadex::brep {

inline constexpr int None = -1;

struct Vertex
{
    gp_Pnt point = {};
    double tolerance = 1e-7; ///< curves that end here come this near, as far as the file tells
};

/// A piece of a curve between two vertices. A closed edge starts and ends at one vertex, which need not be
/// where the curve's parameter begins; an edge that the file gives without a vertex gets one.
struct Edge
{
    Handle(Geom_Curve) curve = {}; ///< null: the straight line from start to end
    /// Parameters of the ends on the curve. Equal (as by default): not known, the builder finds them from the
    /// vertices. Last may lie a period beyond.
    double first = 0;
    double last = 0;
    int start = None; ///< vertices in the sense of the curve
    int end = None;
    double tolerance = 1e-7;  ///< of the curve to the surfaces of its faces, as far as the file tells
    std::uint64_t record = 0; ///< what the file calls it, for reports
};

/// One use of an edge in a loop.
struct EdgeUse
{
    int edge = None;
    bool forward = true; ///< in the sense of the edge
    /// The edge on the face's surface, parametrised as the edge; null when the file has none. It is taken
    /// where it fits.
    Handle(Geom2d_Curve) curveOnSurface = {};
};

/// A closed chain of edges, or a single vertex (the apex of a cone, the pole of a sphere).
struct Loop
{
    std::vector<EdgeUse> uses = {}; ///< in order; the material is to the left about the face's own normal
    int vertex = None;              ///< of a loop without edges
};

struct Face
{
    int surface = None;
    bool sameSense = true; ///< the face's normal is that of the surface
    /// In any order: which one is the outer follows from the geometry. Without a loop the face is the whole
    /// surface within its bounds (a sphere, a torus, an untrimmed patch).
    std::vector<Loop> loops = {};
    /// The surface's own bounds are the outer one, and all loops are holes, whichever way they run.
    bool isNaturallyBounded = false;
    ModelData_Appearance appearance = {}; ///< null: that of the body
    std::uint64_t record = 0;             ///< what the file calls it, for reports
    /// The triangles that the file itself keeps of the face, in the sense of the face's own normal and with
    /// no point shared; called when the face cannot be meshed. Empty when there are none.
    std::function<mesh::FaceTriangles()> fileTriangles = {};
};

struct FaceUse
{
    int face = None;
    bool forward = true; ///< false turns the face's normal round
};

struct Shell
{
    std::vector<FaceUse> faces = {};
    bool closed = false;        ///< as the file says
    Base_UTF16String name = {}; ///< of a sheet, where the file tells sheets and solids of the body apart
};

/// Normals of the faces point out of the material, also on the shells of cavities.
struct Solid
{
    int outer = None;            ///< a shell
    std::vector<int> voids = {}; ///< shells
    Base_UTF16String name = {};  ///< where the file tells sheets and solids of the body apart by names
};

/// A loose curve: an edge that bounds no face.
struct LooseCurve
{
    int edge = None;
    ModelData_Appearance appearance = {};
};

/// What could not be described, and is given as the kernel made it (results of booleans, swept solids).
struct KernelShape
{
    TopoDS_Shape shape = {};
    ModelData_Appearance appearance = {}; ///< null: that of the body
    Base_UTF16String name = {};           ///< as that of a solid
};

struct Description
{
    std::vector<Vertex> vertices;
    std::vector<Edge> edges;
    std::vector<Handle(Geom_Surface)> surfaces;
    std::vector<Face> faces;
    std::vector<Shell> shells;
    std::vector<Solid> solids;
    std::vector<int> sheets; ///< shells that bound no solid
    std::vector<LooseCurve> curves;
    std::vector<KernelShape> kernelShapes;
    ModelData_Appearance appearance; ///< of the body as a whole; null when none

    /// Each gives the number of what it appends.
    int AddVertex(const gp_Pnt& point, double tolerance = 1e-7)
    {
        vertices.push_back({point, tolerance});
        return static_cast<int>(vertices.size()) - 1;
    }
    int AddLine(int start, int end)
    {
        edges.push_back({.start = start, .end = end});
        return static_cast<int>(edges.size()) - 1;
    }
    int AddEdge(Edge edge)
    {
        edges.push_back(std::move(edge));
        return static_cast<int>(edges.size()) - 1;
    }
    int AddSurface(Handle(Geom_Surface) surface)
    {
        surfaces.push_back(std::move(surface));
        return static_cast<int>(surfaces.size()) - 1;
    }
    int AddFace(Face face)
    {
        faces.push_back(std::move(face));
        return static_cast<int>(faces.size()) - 1;
    }
    int AddShell(Shell shell)
    {
        shells.push_back(std::move(shell));
        return static_cast<int>(shells.size()) - 1;
    }

    bool IsEmpty() const { return faces.empty() && curves.empty() && kernelShapes.empty(); }
};

} // namespace cadex::brep
