#include "sdk/brep/FaceEdges.h"

#include <utility>

#include "sdk/brep/Chords.h"

namespace cadex::brep {

namespace {

// Halvings of one span of an edge that follows a surface.
constexpr int MostHalvings = 8;

/// The parameters of an edge's points, with more in between where the straight way between two of them in the
/// surface's parameters is no straight one in space.
class EdgeFollower
{
public:
    EdgeFollower(const Surface& surface, const CurveOnSurface& curve, double chord)
        : mySurface(surface), myCurve(curve), myLimit(chord * chord / 4)
    {
    }

    std::vector<double> Run(const std::vector<double>& parameters)
    {
        myResult = {parameters.front()};
        for (std::size_t i = 0; i + 1 < parameters.size(); ++i) {
            Span(parameters[i], parameters[i + 1], MostHalvings);
        }
        return std::move(myResult);
    }

private:
    void Span(double from, double to, int halvings)
    {
        if (halvings > 0 && LeavesSurface(myCurve.Value(from), myCurve.Value(to))) {
            const double middle = from + (to - from) / 2;
            Span(from, middle, halvings - 1);
            Span(middle, to, halvings - 1);
        } else {
            myResult.push_back(to);
        }
    }

    bool LeavesSurface(const gp_Pnt2d& from, const gp_Pnt2d& to) const
    {
        const gp_XYZ start = mySurface.Value(from).XYZ();
        const gp_XYZ end = mySurface.Value(to).XYZ();
        const double square = (end - start).SquareModulus();
        return square > myLimit &&
               SquareOff(start, end, square, mySurface.Value(Middle(from, to)).XYZ()) > myLimit;
    }

    const Surface& mySurface;
    const CurveOnSurface& myCurve;
    const double myLimit;
    std::vector<double> myResult;
};

/// Whether straight ways in the parameters are as straight in space as the edges along them.
bool KeepsStraight(const Surface& surface, const CurveOnSurface& curve)
{
    const bool isRuled = IsElementary(surface.kind) || surface.kind == SurfaceKind::Extrusion;
    return curve.IsStraight() && isRuled;
}

void FollowSurface(const ResolvedFace& face, EdgeDiscretisation& edges)
{
    for (const Ring& ring : face.rings) {
        for (const RingUse& use : ring.uses) {
            if (use.kind != UseKind::Edge || KeepsStraight(*face.surface, use.curve)) {
                continue;
            }
            const EdgePolyline& line = edges.Of(use.edge);
            std::vector<double> finer =
                EdgeFollower(*face.surface, use.curve, line.chord).Run(line.parameters);
            if (finer.size() > line.parameters.size()) {
                edges.Refine(use.edge, std::move(finer));
            }
        }
    }
}

} // namespace

void DivideEdges(const std::vector<ResolvedFace>& faces, EdgeDiscretisation& edges)
{
    for (const ResolvedFace& face : faces) {
        for (const Ring& ring : face.rings) {
            for (const RingUse& use : ring.uses) {
                if (use.kind == UseKind::Edge) {
                    edges.Divide(use.edge);
                }
            }
        }
    }
    for (const ResolvedFace& face : faces) {
        if (face.status == ResolveStatus::Done && face.surface->kind != SurfaceKind::Plane) {
            FollowSurface(face, edges);
        }
    }
}

} // namespace cadex::brep
