#include "sdk/occt/CurvePolylines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include <BRepAdaptor_Curve.hxx>
#include <BRepMesh_Deflection.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Precision.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_Array1OfReal.hxx>

namespace cadex::occt {

namespace {

constexpr int kFewestPoints = 2;
constexpr double kParameterTolerance = 1e-9;

ModelData_Point ToPoint(const gp_Pnt& point)
{
    return {point.X(), point.Y(), point.Z()};
}

/// The corners of a polygonal curve between its bounds.
Polyline Corners(const BRepAdaptor_Curve& curve)
{
    const double first = curve.FirstParameter();
    const double last = curve.LastParameter();
    Polyline line{ToPoint(curve.Value(first))};
    if (curve.GetType() == GeomAbs_BSplineCurve) {
        const Handle(Geom_BSplineCurve) spline = curve.BSpline();
        for (int i = spline->FirstUKnotIndex(); i <= spline->LastUKnotIndex(); ++i) {
            const double knot = spline->Knot(i);
            if (knot > first + kParameterTolerance && knot < last - kParameterTolerance) {
                line.push_back(ToPoint(curve.Value(knot)));
            }
        }
    }
    line.push_back(ToPoint(curve.Value(last)));
    return line;
}

Polyline Discretise(const TopoDS_Edge& edge, const MeshTolerances& tolerances, double shapeSize)
{
    if (BRep_Tool::Degenerated(edge) || !BRep_Tool::IsGeometric(edge)) {
        return {};
    }
    const BRepAdaptor_Curve curve(edge);
    if (Precision::IsInfinite(curve.FirstParameter()) || Precision::IsInfinite(curve.LastParameter()) ||
        !(curve.LastParameter() > curve.FirstParameter())) {
        return {};
    }
    Polyline line;
    if (curve.GetType() == GeomAbs_Line || (curve.GetType() == GeomAbs_BSplineCurve && curve.Degree() == 1)) {
        line = Corners(curve);
    } else {
        const double chord =
            tolerances.relative
                ? BRepMesh_Deflection::ComputeAbsoluteDeflection(edge, tolerances.chord, shapeSize)
                : tolerances.chord;
        const GCPnts_TangentialDeflection points(curve, tolerances.angle,
                                                 std::max(chord, Precision::Confusion()), kFewestPoints,
                                                 kParameterTolerance);
        for (int i = 1; i <= points.NbPoints(); ++i) {
            line.push_back(ToPoint(points.Value(i)));
        }
    }
    if (edge.Orientation() == TopAbs_REVERSED) {
        std::reverse(line.begin(), line.end());
    }
    return line;
}

/// Numbers for end points; points within the tolerance get the same one.
class EndPoints
{
public:
    explicit EndPoints(double tolerance) : myCell(std::max(tolerance, 1e-12)) {}

    std::size_t NumberOf(const ModelData_Point& point)
    {
        const Cell cell{CellOf(point.X()), CellOf(point.Y()), CellOf(point.Z())};
        for (int i = 0; i < 27; ++i) {
            const Cell near{cell[0] + i % 3 - 1, cell[1] + i / 3 % 3 - 1, cell[2] + i / 9 - 1};
            const auto [begin, end] = myPoints.equal_range(near);
            for (auto it = begin; it != end; ++it) {
                if (IsNear(it->second.point, point)) {
                    return it->second.number;
                }
            }
        }
        const std::size_t number = myPoints.size();
        myPoints.insert({cell, {point, number}});
        return number;
    }

    std::size_t Count() const { return myPoints.size(); }

private:
    using Cell = std::array<double, 3>;
    struct Entry
    {
        ModelData_Point point;
        std::size_t number;
    };

    double CellOf(double value) const { return std::floor(value / myCell); }
    bool IsNear(const ModelData_Point& a, const ModelData_Point& b) const
    {
        return std::abs(a.X() - b.X()) <= myCell && std::abs(a.Y() - b.Y()) <= myCell &&
               std::abs(a.Z() - b.Z()) <= myCell;
    }

    double myCell;
    std::multimap<Cell, Entry> myPoints;
};

/// The curves as links between end points.
class Chains
{
public:
    Chains(std::vector<Polyline> curves, double tolerance)
        : myCurves(std::move(curves)), myUsed(myCurves.size(), false)
    {
        EndPoints points(tolerance);
        for (const Polyline& curve : myCurves) {
            myEnds.push_back({points.NumberOf(curve.front()), points.NumberOf(curve.back())});
        }
        myAt.resize(points.Count());
        for (std::size_t i = 0; i < myEnds.size(); ++i) {
            myAt[myEnds[i][0]].push_back(i);
            myAt[myEnds[i][1]].push_back(i);
        }
    }

    std::vector<Polyline> Join()
    {
        std::vector<Polyline> result;
        for (std::size_t i = 0; i < myCurves.size(); ++i) {
            if (myUsed[i]) {
                continue;
            }
            myUsed[i] = true;
            Polyline chain = std::move(myCurves[i]);
            Extend(chain, myEnds[i][1]);
            std::reverse(chain.begin(), chain.end());
            Extend(chain, myEnds[i][0]);
            std::reverse(chain.begin(), chain.end());
            result.push_back(std::move(chain));
        }
        return result;
    }

private:
    /// Appends the curves that follow at `end`, as long as the way is clear.
    void Extend(Polyline& chain, std::size_t end)
    {
        while (myAt[end].size() == 2) {
            const std::size_t next = myUsed[myAt[end][0]] ? myAt[end][1] : myAt[end][0];
            if (myUsed[next]) {
                return;
            }
            myUsed[next] = true;
            Polyline& curve = myCurves[next];
            if (myEnds[next][0] != end) {
                std::reverse(curve.begin(), curve.end());
                std::swap(myEnds[next][0], myEnds[next][1]);
            }
            chain.insert(chain.end(), curve.begin() + 1, curve.end());
            end = myEnds[next][1];
        }
    }

    std::vector<Polyline> myCurves;
    std::vector<std::array<std::size_t, 2>> myEnds;
    std::vector<std::vector<std::size_t>> myAt; ///< curves by end point
    std::vector<bool> myUsed;
};

} // namespace

Polyline DiscretiseEdge(const TopoDS_Edge& edge, const MeshTolerances& tolerances, double shapeSize)
{
    try {
        OCC_CATCH_SIGNALS
        return Discretise(edge, tolerances, shapeSize);
    } catch (const Standard_Failure&) {
        return {};
    }
}

std::vector<Polyline> JoinCurves(std::vector<Polyline> curves, double tolerance)
{
    std::erase_if(curves, [](const Polyline& curve) { return curve.size() < 2; });
    return Chains(std::move(curves), tolerance).Join();
}

} // namespace cadex::occt
