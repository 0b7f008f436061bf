#include "sdk/step/StepShapes.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "sdk/mesh/MeshTopology.h"

namespace cadex::step {

using mesh::AreaNormal;
using mesh::Determinant;
using mesh::IsUsable;
using mesh::Mapped;
using mesh::MeshTopology;
using mesh::Vector3;
using part21::Raw;
using part21::RefRange;
using part21::Xyz;

namespace {

constexpr Raw True{".T."};

// Components of unit normals carry twelve decimals: far below any tolerance, and a third shorter in the file.
double Trimmed(double component)
{
    return std::round(component * 1e12) / 1e12;
}

class MeshText
{
public:
    MeshText(Part21Writer& out, const TriangleSetImpl& mesh, const Matrix3& linear)
        : myOut(out),
          myMesh(mesh),
          myLinear(linear),
          myMirrored(Determinant(linear) < 0),
          myTopology(mesh, linear)
    {
    }

    void Write(std::vector<StepShapeItem>& items)
    {
        if (myTopology.pieces.empty()) {
            return;
        }
        WriteVertices();
        std::vector<RefRange> open;
        std::vector<RefRange> solid;
        bool hollow = false;
        double volume = 0;
        for (const MeshTopology::Piece& piece : myTopology.pieces) {
            const bool encloses = piece.closed && piece.volume != 0;
            (encloses ? solid : open).push_back(WriteFaces(piece));
            hollow = hollow || (encloses && piece.volume < 0);
            volume += encloses ? piece.volume : 0;
        }
        if (volume <= 0) {
            open.insert(open.end(), solid.begin(), solid.end()); // inside out: no body, yet a surface
            solid.clear();
        }
        if (hollow && solid.size() > 1) {
            WriteSolid(solid, items); // cavities belong to the shell of the body around them
        } else {
            for (const RefRange& faces : solid) {
                WriteSolid({faces}, items);
            }
        }
        if (!open.empty()) {
            const Ref shell = WriteShell("OPEN_SHELL", open);
            items.push_back(
                {myOut.Add("SHELL_BASED_SURFACE_MODEL", "", std::array{shell}), StepShapeKind::Surface});
        }
    }

private:
    void WriteVertices()
    {
        myFirstVertex = myOut.Reserve(myTopology.pointOf.size());
        for (std::size_t i = 0; i < myTopology.pointOf.size() && myOut.Ok(); ++i) {
            const Vector3 p = Mapped(myLinear, myMesh.points[myTopology.pointOf[i]]);
            myOut.AddAs(Ref{myFirstVertex.id + i}, "CARTESIAN_POINT", "", Xyz{p[0], p[1], p[2]});
        }
    }

    /// Six entities for each triangle, the face first.
    RefRange WriteFaces(const MeshTopology::Piece& piece)
    {
        const std::size_t count = piece.last - piece.first;
        const Ref first = myOut.Reserve(count * EntitiesPerFace);
        for (std::size_t i = 0; i < count && myOut.Ok(); ++i) {
            WriteFace(myTopology.triangles[piece.first + i], first.id + i * EntitiesPerFace);
        }
        return {first, count, EntitiesPerFace};
    }

    void WriteFace(U32 triangle, std::uint64_t id)
    {
        MeshTopology::Corners v = myTopology.CornersOf(myMesh, triangle);
        if (myMirrored) {
            std::swap(v[0], v[2]);
        }
        const Vector3 n = AreaNormal(Position(v[0]), Position(v[1]), Position(v[2]));
        const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        const Ref face{id};
        const Ref bound{id + 1};
        const Ref loop{id + 2};
        const Ref plane{id + 3};
        const Ref axis{id + 4};
        const Ref normal{id + 5};
        const auto vertex = [this](U32 index) { return Ref{myFirstVertex.id + index}; };
        myOut.AddAs(face, "FACE_SURFACE", "", std::array{bound}, plane, True);
        myOut.AddAs(bound, "FACE_OUTER_BOUND", "", loop, True);
        myOut.AddAs(loop, "POLY_LOOP", "", std::array{vertex(v[0]), vertex(v[1]), vertex(v[2])});
        myOut.AddAs(plane, "PLANE", "", axis);
        myOut.AddAs(axis, "AXIS2_PLACEMENT_3D", "", vertex(v[0]), normal, Ref());
        myOut.AddAs(normal, "DIRECTION", "",
                    Xyz{Trimmed(n[0] / length), Trimmed(n[1] / length), Trimmed(n[2] / length)});
    }

    Vector3 Position(U32 vertex) const { return Mapped(myLinear, myMesh.points[myTopology.pointOf[vertex]]); }

    Ref WriteShell(std::string_view type, const std::vector<RefRange>& faces)
    {
        const Ref shell = myOut.Reserve();
        myOut.Begin(shell);
        myOut.Text(type);
        myOut.Text("('',(");
        const char* separator = "";
        for (const RefRange& range : faces) {
            for (std::size_t i = 0; i < range.count; ++i) {
                myOut.Text(separator);
                myOut.Put(Ref{range.first.id + i * range.step});
                separator = ",";
            }
        }
        myOut.Text("))");
        myOut.End();
        return shell;
    }

    void WriteSolid(const std::vector<RefRange>& faces, std::vector<StepShapeItem>& items)
    {
        const Ref shell = WriteShell("CLOSED_SHELL", faces);
        items.push_back({myOut.Add("FACETED_BREP", "", shell), StepShapeKind::Solid});
    }

    static constexpr std::size_t EntitiesPerFace = 6;

    Part21Writer& myOut;
    const TriangleSetImpl& myMesh;
    const Matrix3& myLinear;
    const bool myMirrored;
    const MeshTopology myTopology;
    Ref myFirstVertex;
};

} // namespace

void WriteStepMesh(Part21Writer& out, const TriangleSetImpl& mesh, const Matrix3& linear,
                   std::vector<StepShapeItem>& items)
{
    MeshText(out, mesh, linear).Write(items);
}

void WriteStepPolyLines(Part21Writer& out, const PolyLineSetImpl& lines, const Matrix3& linear,
                        std::vector<StepShapeItem>& items)
{
    std::vector<Ref> curves;
    std::vector<Vector3> points;
    const auto flush = [&] {
        if (points.size() > 1) {
            const Ref first = out.Reserve(points.size());
            for (std::size_t i = 0; i < points.size(); ++i) {
                out.AddAs(Ref{first.id + i}, "CARTESIAN_POINT", "",
                          Xyz{points[i][0], points[i][1], points[i][2]});
            }
            curves.push_back(out.Add("POLYLINE", "", RefRange{first, points.size()}));
        }
        points.clear();
    };
    std::vector<Vector3> next;
    for (std::size_t line = 0; line + 1 < lines.starts.size() && out.Ok(); ++line) {
        next.clear();
        for (std::size_t i = lines.starts[line]; i < lines.starts[line + 1]; ++i) {
            const Vector3 point = Mapped(linear, lines.points[i]);
            if (next.empty() || point != next.back()) {
                next.push_back(point);
            }
        }
        if (next.size() < 2 || !std::all_of(next.begin(), next.end(), IsUsable)) {
            continue;
        }
        // One that goes on where the last one ended is written as its continuation.
        if (points.empty() || points.back() != next.front()) {
            flush();
        }
        points.insert(points.end(), next.begin() + (points.empty() ? 0 : 1), next.end());
    }
    flush();
    if (!curves.empty()) {
        items.push_back({out.Add("GEOMETRIC_CURVE_SET", "", curves), StepShapeKind::Curves});
    }
}

} // namespace cadex::step
