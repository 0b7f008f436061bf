// Area and volume of resolved faces, by rows of points between their rings: the kernel's integrals and its
// mesher are coarse on splines of few spans.
//
//     EXPECT_NEAR(MeasuresOf(body, ResolveFace(body, 0)).area, 4 * M_PI, 1e-3);
#pragma once

#include <algorithm>
#include <vector>

#include "sdk/brep/ResolvedFace.h"
#include "sdk/brep/SurfaceEvaluator.h"

namespace cadex::brep {

struct Measures
{
    double area = 0;
    double volume = 0;
};

/// Places where the rings of a face cross a line of constant v, in order.
inline std::vector<double> Crossings(const std::vector<std::vector<gp_Pnt2d>>& outlines, double v)
{
    std::vector<double> found;
    for (const std::vector<gp_Pnt2d>& outline : outlines) {
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const gp_Pnt2d &a = outline[i], &b = outline[(i + 1) % outline.size()];
            if ((a.Y() > v) != (b.Y() > v)) {
                found.push_back(a.X() + (b.X() - a.X()) * (v - a.Y()) / (b.Y() - a.Y()));
            }
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

/// Of one region: an outer ring and its holes, the first of which is at `from`.
inline std::vector<std::vector<gp_Pnt2d>> OutlinesOf(const Body& body, const ResolvedFace& face,
                                                     std::size_t from)
{
    constexpr int Samples = 240;
    std::vector<std::vector<gp_Pnt2d>> outlines;
    for (std::size_t i = from; i < face.rings.size() && (i == from || !face.rings[i].isOuter); ++i) {
        const Ring& ring = face.rings[i];
        outlines.emplace_back();
        for (const RingUse& use : ring.uses) {
            for (int k = 0; k < Samples; ++k) {
                const double part = double(use.forward ? k : Samples - k) / Samples;
                const double t = use.first + (use.last - use.first) * part;
                gp_Pnt2d place = use.curve.Value(t);
                if (face.surface->kind == SurfaceKind::Plane) {
                    Project(SurfaceEvaluator(*face.surface), face.EdgeOf(body, use).Value(t), place);
                }
                outlines.back().push_back(place);
            }
        }
    }
    return outlines;
}

/// Area between the rings of a region, and its share of the volume seen from the centre.
inline Measures MeasuresOf(const Surface& surface, const std::vector<std::vector<gp_Pnt2d>>& outlines,
                           const gp_Pnt& centre)
{
    constexpr int Rows = 100, Columns = 48;
    double low = 1e300, high = -1e300;
    for (const auto& outline : outlines) {
        for (const gp_Pnt2d& place : outline) {
            low = std::min(low, place.Y());
            high = std::max(high, place.Y());
        }
    }
    Measures sum;
    const double step = (high - low) / Rows;
    for (int row = 0; row < Rows; ++row) {
        const double v = low + step * (row + 0.5);
        const std::vector<double> ends = Crossings(outlines, v);
        for (std::size_t i = 0; i + 1 < ends.size(); i += 2) {
            const double width = (ends[i + 1] - ends[i]) / Columns;
            for (int column = 0; column < Columns; ++column) {
                gp_Pnt point;
                gp_Vec du, dv;
                surface.D1(gp_Pnt2d(ends[i] + width * (column + 0.5), v), point, du, dv);
                const gp_Vec normal = du.Crossed(dv) * (width * step);
                sum.area += normal.Magnitude();
                sum.volume += gp_Vec(centre, point).Dot(normal) / 3;
            }
        }
    }
    return sum;
}

inline Measures MeasuresOf(const Body& body, const ResolvedFace& face, const gp_Pnt& centre = {})
{
    Measures sum;
    for (std::size_t i = 0; i < face.rings.size(); ++i) {
        if (face.rings[i].isOuter) {
            const Measures one = MeasuresOf(*face.surface, OutlinesOf(body, face, i), centre);
            sum.area += one.area;
            sum.volume += face.forward ? one.volume : -one.volume;
        }
    }
    return sum;
}

inline Measures MeasuresOf(const Body& body, const std::vector<ResolvedFace>& faces, const gp_Pnt& centre)
{
    Measures sum;
    for (const ResolvedFace& face : faces) {
        const Measures one = MeasuresOf(body, face, centre);
        sum.area += one.area;
        sum.volume += one.volume;
    }
    return sum;
}

} // namespace cadex::brep
