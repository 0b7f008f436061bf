#include "sdk/brep/FaceTessellation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

#include <gp_Pnt2d.hxx>
#include <gp_Vec.hxx>

#include "sdk/brep/Chords.h"
#include "sdk/brep/FaceNormals.h"
#include "sdk/brep/FaceSteps.h"
#include "sdk/brep/LoopSlips.h"
#include "sdk/brep/SurfaceEvaluator.h"
#include "sdk/brep/SurfaceProjection.h"
#include "sdk/brep/Tolerances.h"
#include "sdk/mesh/Delaunay.h"
#include "sdk/occt/Coordinates.h"

namespace cadex::brep {

using occt::CoordinateOf;
using occt::SetCoordinate;

namespace {

using mesh::Delaunay;
using mesh::PlanePoint;

// Between the points of a sphere's shortest rows, in those of the longest.
constexpr int LargestStride = 256;

// A point of the grid, and one in the middle of a side, keep this distance, in steps, from points that are
// there.
constexpr double GridClearance = 0.45;
constexpr double MiddleClearance = 1e-3;
constexpr double MostGridPoints = 2e5;
constexpr std::size_t MostNodes = 100000;

// Lines of the grid follow the parameters of the loops' points where those are not closer than this share of
// a step; the last one may be as near to the end as the other share.
constexpr double LineSpacing = 0.6;
constexpr double LastLineSpacing = 0.3;
constexpr double StepSlack = 0.05;

// A mesh follows the surface no better than its rim does: share of the coarsest edge's squared chord.
constexpr double RimShare = 0.3;
// Normals may turn by so much more than the angle before a side is divided, and not on the smallest sides
// (squared length in squared chords).
constexpr double TurnSlack = 1.2;
constexpr double SmallestTurnSide = 64;
constexpr double SmallestSide = 4;

// A side is turned for no less of a cosine; a triangle flatter than this share has no direction.
constexpr double LeastGain = 0.005;
constexpr double SmallestHeight = 1e-6;

// Of the range of a parameter, between two edges of a loop.
constexpr double LargestGap = 0.05;

// Share of a face's area that may face backwards.
constexpr double MostTurned = 0.02;

ModelData_Vectorf ToFloat(const gp_XYZ& unit)
{
    // Rounding noise of a zero component would keep equal normals of neighbouring faces apart.
    const auto clean = [](double value) { return std::abs(value) < 1e-9 ? 0.0F : static_cast<float>(value); };
    return {clean(unit.X()), clean(unit.Y()), clean(unit.Z())};
}

class Tessellation
{
public:
    Tessellation(const Body& body, const EdgeDiscretisation& edges, const ResolvedFace& face, double slip)
        : myBody(body),
          myEdges(edges),
          myFace(face),
          mySurface(*face.surface),
          myEvaluator(mySurface),
          mySlip(slip)
    {
    }

    FaceMesh Run()
    {
        DivideOwnEdges();
        ChooseSteps();
        if (!AreLoopsClosed()) {
            return {};
        }
        mySurfaceNormals.emplace(mySurface, myEvaluator, myBox);
        AddLoops();
        if (!TriangulateSmall() && !Triangulate()) {
            return {};
        }
        AddNormals();
        return std::move(myMesh);
    }

private:
    using Triangle = std::array<int, 3>;

    // ------------------------------------------------------------------------------------------- loops

    /// Points of the face's own come first: its vertices, then what divides its edges.
    void DivideOwnEdges()
    {
        for (const Vertex& vertex : myFace.ownVertices) {
            myMesh.ownPoints.push_back(vertex.point);
        }
        for (const BodyEdge& edge : myFace.ownEdges) {
            myOwnLines.push_back(DivideEdge(edge, myEdges.Tolerances(), myEdges.BodySize()));
            EdgePolyline& line = myOwnLines.back();
            line.firstInner = static_cast<int>(myMesh.ownPoints.size());
            for (std::size_t i = 1; i + 1 < line.parameters.size(); ++i) {
                myMesh.ownPoints.push_back(edge.Value(line.parameters[i]));
            }
        }
    }

    void ChooseSteps()
    {
        double sum = 0;
        double coarsest = 0;
        int count = 0;
        for (int k = 0; k < 2; ++k) {
            myBox.low[k] = std::numeric_limits<double>::max();
            myBox.high[k] = -std::numeric_limits<double>::max();
        }
        for (const Ring& ring : myFace.rings) {
            for (int k = 0; k < 2; ++k) {
                myBox.low[k] = std::min(myBox.low[k], ring.low[k]);
                myBox.high[k] = std::max(myBox.high[k], ring.high[k]);
            }
            for (const RingUse& use : ring.uses) {
                if (use.kind != UseKind::Pole) {
                    const double chord = LineOf(use).chord;
                    sum += chord;
                    coarsest = std::max(coarsest, chord);
                    ++count;
                }
            }
        }
        myChord =
            count > 0 ? sum / count : ChordFor(myEdges.Tolerances(), myEdges.BodySize(), myEdges.BodySize());
        myLimit = std::max(myChord * myChord, RimShare * coarsest * coarsest);
        mySteps = StepsFor(mySurface, myBox, myChord, myEdges.Tolerances().angle);
    }

    const EdgePolyline& LineOf(const RingUse& use) const
    {
        return use.kind == UseKind::Own ? myOwnLines[static_cast<std::size_t>(use.edge)]
                                        : myEdges.Of(use.edge);
    }

    /// Whether each use starts in the parameters where the one before ends, as far as the file's accuracy
    /// goes.
    bool AreLoopsClosed() const
    {
        if (mySurface.kind == SurfaceKind::Plane) {
            return true;
        }
        const auto isGap = [&](const gp_Pnt2d& end, const gp_Pnt2d& start) {
            return std::abs(end.X() - start.X()) > LargestGap * myBox.Range(0) ||
                   std::abs(end.Y() - start.Y()) > LargestGap * myBox.Range(1);
        };
        return std::none_of(myFace.rings.begin(), myFace.rings.end(), [&](const Ring& ring) {
            gp_Pnt2d end = ring.uses.back().To();
            return std::any_of(ring.uses.begin(), ring.uses.end(), [&](const RingUse& use) {
                return isGap(std::exchange(end, use.To()), use.From());
            });
        });
    }

    void AddLoops()
    {
        for (const Ring& ring : myFace.rings) {
            const std::size_t first = myPlaces.size();
            for (const RingUse& use : ring.uses) {
                if (use.kind == UseKind::Pole) {
                    AddPole(use);
                } else {
                    AddEdge(use);
                }
            }
            myLoops.emplace_back();
            for (std::size_t node = first; node < myPlaces.size(); ++node) {
                myLoops.back().push_back(static_cast<int>(node));
            }
        }
    }

    /// All points but the last, which is the first one of the next use.
    void AddEdge(const RingUse& use)
    {
        const EdgePolyline& line = LineOf(use);
        const std::size_t count = line.parameters.size();
        for (std::size_t i = 0; i + 1 < count; ++i) {
            const std::size_t place = use.forward ? i : count - 1 - i;
            const int point = PointOf(use, line, place);
            gp_Pnt2d where;
            if (mySurface.kind == SurfaceKind::Plane) {
                ProjectElementary(mySurface, PositionOf(point), where);
            } else {
                where = use.curve.Value(line.parameters[place]);
            }
            AddNode(where, point);
        }
    }

    /// Which share of a row's points is enough where the row is shorter than the widest one by such a factor.
    static int StrideFor(double length)
    {
        int stride = 1;
        for (double width = length; width < 0.5 && stride < LargestStride; width *= 2) {
            stride *= 2;
        }
        return stride;
    }

    /// As many nodes along the pole as its neighbours in the face have.
    void AddPole(const RingUse& use)
    {
        const gp_Pnt2d from = use.From();
        const gp_Vec2d way(from, use.To());
        // Beside a sphere's pole the first row has few points; more on the pole would reach over them.
        const int stride = mySteps.narrowsToPoles ? StrideFor(std::sin(mySteps.step[1])) : 1;
        const double length =
            std::max(std::abs(way.X()) / mySteps.step[0], std::abs(way.Y()) / mySteps.step[1]) / stride;
        const int count = std::max(1, static_cast<int>(std::min(std::ceil(length), 1e3)));
        for (int i = 0; i < count; ++i) {
            AddNode(from.Translated(way * (static_cast<double>(i) / count)), VertexPoint(use.pole));
        }
    }

    int PointOf(const RingUse& use, const EdgePolyline& line, std::size_t place) const
    {
        if (use.kind != UseKind::Own) {
            return myEdges.NumberOf(use.edge, place);
        }
        const BodyEdge& edge = myFace.ownEdges[static_cast<std::size_t>(use.edge)];
        if (place == 0 || place + 1 == line.parameters.size()) {
            return VertexPoint(place == 0 ? edge.start : edge.end);
        }
        return -line.firstInner - static_cast<int>(place);
    }

    int VertexPoint(int vertex) const
    {
        const int count = static_cast<int>(myBody.vertices.size());
        return vertex < count ? vertex : -1 - (vertex - count);
    }

    gp_Pnt PositionOf(int point) const
    {
        return point >= 0 ? myEdges.Point(point) : myMesh.ownPoints[static_cast<std::size_t>(-1 - point)];
    }

    void AddNode(const gp_Pnt2d& place, int point)
    {
        myPlaces.push_back(place);
        myScaled.push_back(Scaled(place));
        myMesh.points.push_back(point);
    }

    PlanePoint Scaled(const gp_Pnt2d& place) const
    {
        return {place.X() / mySteps.step[0], place.Y() / mySteps.step[1]};
    }

    // ----------------------------------------------------------------------------------- triangulation

    /// Three or four points on a surface that is not curved between them, which most planar faces are.
    bool TriangulateSmall()
    {
        if (mySteps.isCurved || myLoops.size() != 1 || myPlaces.size() > 4) {
            return false;
        }
        const std::vector<PlanePoint>& p = myScaled;
        if (p.size() == 3) {
            myMesh.triangles = {{0, 1, 2}};
            return Orientation(p[0], p[1], p[2]) > 0;
        }
        const auto isLeft = [&](std::size_t a, std::size_t b, std::size_t c) {
            return Orientation(p[a], p[b], p[c]) > 0;
        };
        const bool isFirst = p.size() == 4 && isLeft(0, 1, 2) && isLeft(0, 2, 3);
        const bool isSecond = p.size() == 4 && isLeft(0, 1, 3) && isLeft(1, 2, 3);
        if (isFirst && (!isSecond || !IsInCircle(p[0], p[1], p[2], p[3]))) {
            myMesh.triangles = {{0, 1, 2}, {0, 2, 3}};
        } else if (isSecond) {
            myMesh.triangles = {{0, 1, 3}, {1, 2, 3}};
        }
        return isFirst || isSecond;
    }

    bool Triangulate()
    {
        const Delaunay::Outcome outcome = myDelaunay.Start(myScaled, myLoops);
        LoopSlips slips(myScaled, [this](int node) { return PositionOfNode(node); });
        if (outcome != Delaunay::Outcome::Done &&
            !(outcome == Delaunay::Outcome::LoopsCross &&
              slips.Start(myLoops, std::max({tolerance::LoopGap, myChord / 2, mySlip}), myDelaunay))) {
            return false;
        }
        if (mySteps.needsGrid) {
            AddGrid();
        }
        if (mySteps.isCurved) {
            Refine();
            TurnSides();
        }
        myMesh.triangles = myDelaunay.Triangles();
        return slips.PutBack(myMesh.triangles) && (!mySteps.isCurved || !IsFolded());
    }

    void AddGrid()
    {
        const std::vector<double> us = GridLines(0);
        const std::vector<double> vs = GridLines(1);
        if (static_cast<double>(us.size()) * static_cast<double>(vs.size()) > MostGridPoints) {
            return;
        }
        for (std::size_t row = 0; row < vs.size(); ++row) {
            // Rows of a sphere get shorter towards its poles.
            const double length = mySteps.narrowsToPoles ? std::cos(vs[row]) : 1;
            const auto stride = static_cast<std::size_t>(StrideFor(length));
            for (std::size_t i = 0; i < us.size(); i += stride) {
                // From row to row to and fro, so that each point is near the one before.
                const std::size_t column = row % 2 == 0 ? i : (us.size() - 1) / stride * stride - i;
                AddInnerNode({us[column], vs[row]}, GridClearance, Delaunay::None);
            }
        }
    }

    /// Parameters between the bounds, through those of the loops' points, thinned out and filled up to the
    /// step: points beside the rows of the loops' own would make the mesh zigzag.
    std::vector<double> GridLines(int k) const
    {
        std::vector<double> known;
        for (const gp_Pnt2d& place : myPlaces) {
            known.push_back(CoordinateOf(place, k));
        }
        std::sort(known.begin(), known.end());
        const double step = mySteps.step[k];
        std::vector<double> base{known.front()};
        for (const double value : known) {
            if (value - base.back() >= LineSpacing * step) {
                base.push_back(value);
            }
        }
        if (base.size() == 1 || known.back() - base.back() > LastLineSpacing * step) {
            base.push_back(known.back());
        } else {
            base.back() = known.back();
        }
        std::vector<double> lines;
        for (std::size_t i = 0; i + 1 < base.size(); ++i) {
            const double range = base[i + 1] - base[i];
            const double spans = std::min(std::max(1.0, std::ceil(range / step - StepSlack)), MostGridPoints);
            for (int j = i == 0 ? 1 : 0; j < spans; ++j) {
                lines.push_back(base[i] + range * j / spans);
            }
        }
        return lines;
    }

    int AddInnerNode(const gp_Pnt2d& place, double clearance, int near)
    {
        const int node = myDelaunay.Insert(Scaled(place), clearance, near);
        if (node != Delaunay::None) {
            AddNode(place, -1 - static_cast<int>(myMesh.ownPoints.size()));
            myMesh.ownPoints.push_back(myEvaluator.Value(place));
        }
        return node;
    }

    // -------------------------------------------------------------------------------------- refinement

    /// Adds the middle of each side that leaves the surface, or along which it turns too far.
    void Refine()
    {
        std::vector<Delaunay::InnerSide> sides = myDelaunay.InnerSides();
        for (std::size_t i = 0; i < sides.size() && myPlaces.size() < MostNodes; ++i) {
            const Delaunay::InnerSide side = sides[i];
            if (!myDelaunay.IsInnerSide(side)) {
                continue;
            }
            const gp_Pnt2d middle = MiddleOf(side);
            if (IsTooCoarse(side, middle)) {
                const int node = AddInnerNode(middle, MiddleClearance, side.from);
                if (node != Delaunay::None) {
                    myDelaunay.InnerSidesAt(node, sides);
                }
            }
        }
    }

    /// A side that ends in a pole comes to it along a line of the surface, from whichever place.
    gp_Pnt2d MiddleOf(const Delaunay::InnerSide& side) const
    {
        gp_Pnt2d from = myPlaces[static_cast<std::size_t>(side.from)];
        gp_Pnt2d to = myPlaces[static_cast<std::size_t>(side.to)];
        if (const Pole* pole = mySurfaceNormals->PoleOf(from)) {
            SetCoordinate(from, 1 - pole->fixed, CoordinateOf(to, 1 - pole->fixed));
        } else if (const Pole* other = mySurfaceNormals->PoleOf(to)) {
            SetCoordinate(to, 1 - other->fixed, CoordinateOf(from, 1 - other->fixed));
        }
        return Middle(from, to);
    }

    bool IsTooCoarse(const Delaunay::InnerSide& side, const gp_Pnt2d& place)
    {
        const auto from = static_cast<std::size_t>(side.from);
        const auto to = static_cast<std::size_t>(side.to);
        const gp_XYZ start = PositionOf(myMesh.points[from]).XYZ();
        const gp_XYZ end = PositionOf(myMesh.points[to]).XYZ();
        const double square = (end - start).SquareModulus();
        if (square < SmallestSide * myLimit) {
            return false;
        }
        const gp_XYZ middle = myEvaluator.Value(place).XYZ();
        if (SquareOff(start, end, square, middle) > myLimit) {
            return true;
        }
        if (!mySteps.needsGrid || square < SmallestTurnSide * myLimit) {
            return false;
        }
        const gp_XYZ a = NormalOf(from);
        const gp_XYZ b = NormalOf(to);
        return a.SquareModulus() > 0 && b.SquareModulus() > 0 &&
               a.Dot(b) < std::cos(std::min(TurnSlack * myEdges.Tolerances().angle, M_PI));
    }

    /// Of the surface at a node; zero where there is none. Found once, in the nodes' order.
    const gp_XYZ& NormalOf(std::size_t node)
    {
        while (myNormals.size() <= node) {
            myNormals.push_back(mySurfaceNormals->At(myPlaces[myNormals.size()]).value_or(gp_XYZ()));
        }
        return myNormals[node];
    }

    /// Lets triangles lie along the surface where the distances in its parameters say otherwise: near poles,
    /// across folds, along rulings.
    void TurnSides()
    {
        NormalOf(myPlaces.size() - 1);
        const double enough = std::cos(myEdges.Tolerances().angle / 2);
        myDelaunay.TurnSides([&](const Delaunay::Diagonal& side) {
            const double now =
                std::min(Fit({side.from, side.to, side.left}), Fit({side.to, side.from, side.right}));
            return now < enough && std::min(Fit({side.left, side.from, side.right}),
                                            Fit({side.right, side.to, side.left})) > now + LeastGain;
        });
    }

    /// Whether the edges lie on the surface in such a way that the triangles between them run over it to and
    /// fro: curves in the parameters that leave the surface where it ends.
    bool IsFolded() const
    {
        double whole = 0;
        double turned = 0;
        for (const Triangle& triangle : myMesh.triangles) {
            const double area = SideProduct(triangle).Modulus();
            whole += area;
            turned += Fit(triangle) < -0.5 ? area : 0;
        }
        return turned > MostTurned * whole;
    }

    /// Along the triangle's normal, twice its area long.
    gp_XYZ SideProduct(const Triangle& triangle) const
    {
        const gp_XYZ origin = PositionOfNode(triangle[0]);
        return (PositionOfNode(triangle[1]) - origin).Crossed(PositionOfNode(triangle[2]) - origin);
    }
    gp_XYZ PositionOfNode(int node) const
    {
        return PositionOf(myMesh.points[static_cast<std::size_t>(node)]).XYZ();
    }

    /// The smallest cosine between the triangle and the surface's normals at its corners; -1 without area.
    double Fit(const Triangle& triangle) const
    {
        const auto point = [&](std::size_t k) {
            return myMesh.points[static_cast<std::size_t>(triangle[k])];
        };
        if (point(0) == point(1) || point(1) == point(2) || point(2) == point(0)) {
            return 1; // none is left of it
        }
        const gp_XYZ a = PositionOfNode(triangle[0]);
        const gp_XYZ b = PositionOfNode(triangle[1]);
        const gp_XYZ c = PositionOfNode(triangle[2]);
        const gp_XYZ normal = SideProduct(triangle);
        const double size = normal.Modulus();
        const double longest =
            std::max({(b - a).SquareModulus(), (c - b).SquareModulus(), (a - c).SquareModulus()});
        if (!(size > SmallestHeight * longest)) {
            return -1;
        }
        double fit = 1;
        for (const int corner : triangle) {
            const gp_XYZ& known = myNormals[static_cast<std::size_t>(corner)];
            if (known.SquareModulus() > 0) {
                fit = std::min(fit, normal.Dot(known) / size);
            }
        }
        return fit;
    }

    // ----------------------------------------------------------------------------------------- normals

    void AddNormals()
    {
        DropPointTriangles();
        const double sign = myFace.forward ? 1 : -1;
        if (mySurface.kind == SurfaceKind::Plane) {
            myMesh.normals = {ToFloat(NormalOf(0) * sign)};
        } else {
            for (const gp_XYZ& normal : myNormals) {
                myMesh.normals.push_back(ToFloat(normal * sign));
            }
            AddLimits(sign);
        }
        if (!myFace.forward) {
            for (Triangle& triangle : myMesh.triangles) {
                std::swap(triangle[1], triangle[2]);
            }
        }
    }

    void DropPointTriangles()
    {
        std::erase_if(myMesh.triangles, [&](const Triangle& triangle) {
            const auto point = [&](std::size_t k) {
                return myMesh.points[static_cast<std::size_t>(triangle[k])];
            };
            return point(0) == point(1) || point(1) == point(2) || point(2) == point(0);
        });
    }

    /// At a pole each triangle has a node, and a normal, of its own.
    void AddLimits(double sign)
    {
        const ModelData_Vectorf none;
        for (Triangle& triangle : myMesh.triangles) {
            for (std::size_t k = 0; k < 3; ++k) {
                const auto node = static_cast<std::size_t>(triangle[k]);
                if (node >= myPlaces.size() || myMesh.normals[node] != none) {
                    continue;
                }
                const auto next = static_cast<std::size_t>(triangle[(k + 1) % 3]);
                const auto last = static_cast<std::size_t>(triangle[(k + 2) % 3]);
                if (next >= myPlaces.size() || last >= myPlaces.size()) {
                    continue;
                }
                const std::optional<gp_XYZ> limit =
                    mySurfaceNormals->LimitAt(myPlaces[node], Middle(myPlaces[next], myPlaces[last]));
                if (limit) {
                    triangle[k] = static_cast<int>(myMesh.points.size());
                    myMesh.points.push_back(myMesh.points[node]);
                    myMesh.normals.push_back(ToFloat(*limit * sign));
                }
            }
        }
    }

    const Body& myBody;
    const EdgeDiscretisation& myEdges;
    const ResolvedFace& myFace;
    const Surface& mySurface;
    const SurfaceEvaluator myEvaluator;
    const double mySlip;
    std::optional<FaceNormals> mySurfaceNormals;
    FaceMesh myMesh;
    Delaunay myDelaunay;
    std::vector<EdgePolyline> myOwnLines;
    Delaunay::Loops myLoops;
    std::vector<gp_Pnt2d> myPlaces;   ///< of the nodes
    std::vector<PlanePoint> myScaled; ///< the places, in steps
    std::vector<gp_XYZ> myNormals;    ///< of the surface at the places; zero where there is none
    ParameterBox myBox;
    FaceSteps mySteps;
    double myChord = 0; ///< mean of those of the edges
    double myLimit = 0; ///< square of what a side may lie off the surface
};

} // namespace

FaceMesh TessellateFace(const Body& body, const EdgeDiscretisation& edges, const ResolvedFace& face,
                        double slip)
{
    return face.status == ResolveStatus::Done ? Tessellation(body, edges, face, slip).Run() : FaceMesh();
}

} // namespace cadex::brep
