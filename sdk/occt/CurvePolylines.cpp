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

#include "sdk/mesh/EngineTolerances.h"

namespace cadex::occt {

namespace {

constexpr int FewestPoints = 2;

ModelData_Point ToPoint(const gp_Pnt& point)
{
    return {point.X(), point.Y(), point.Z()};
}

bool IsFinite(const ModelData_Point& point)
{
    return std::isfinite(point.X()) && std::isfinite(point.Y()) && std::isfinite(point.Z());
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
            if (knot > first + tolerance::CurveParameter && knot < last - tolerance::CurveParameter) {
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
                                                 std::max(chord, Precision::Confusion()), FewestPoints,
                                                 tolerance::CurveParameter);
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
    explicit EndPoints(double tolerance)
        : myTolerance(tolerance), myCell(std::max(tolerance, 1e-9) * CellSize)
    {
    }

    std::size_t NumberOf(const ModelData_Point& point)
    {
        const Cell low = CellOf(point, -myTolerance);
        const Cell high = CellOf(point, myTolerance);
        // Mostly one cell, which is large beside the tolerance; at its border the ones beyond.
        for (int side = 0; side < 8; ++side) {
            Cell cell = low;
            bool isNew = true;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                if ((side >> axis & 1) != 0) {
                    cell[axis] = high[axis];
                    isNew = isNew && low[axis] != high[axis];
                }
            }
            const Entry* known = isNew ? FindIn(cell, point) : nullptr;
            if (known != nullptr) {
                return known->number;
            }
        }
        const std::size_t number = myPoints.size();
        myPoints.insert({CellOf(point, 0), {point, number}});
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

    static constexpr double CellSize = 1000;

    Cell CellOf(const ModelData_Point& point, double shift) const
    {
        return {std::floor((point.X() + shift) / myCell), std::floor((point.Y() + shift) / myCell),
                std::floor((point.Z() + shift) / myCell)};
    }
    const Entry* FindIn(const Cell& cell, const ModelData_Point& point) const
    {
        const auto [begin, end] = myPoints.equal_range(cell);
        const auto found = std::find_if(begin, end, [&](const auto& item) {
            const ModelData_Point& other = item.second.point;
            return std::abs(other.X() - point.X()) <= myTolerance &&
                   std::abs(other.Y() - point.Y()) <= myTolerance &&
                   std::abs(other.Z() - point.Z()) <= myTolerance;
        });
        return found != end ? &found->second : nullptr;
    }

    double myTolerance;
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
    std::erase_if(curves, [](const Polyline& curve) {
        return curve.size() < 2 || !std::all_of(curve.begin(), curve.end(), IsFinite);
    });
    return Chains(std::move(curves), tolerance).Join();
}

} // namespace cadex::occt
