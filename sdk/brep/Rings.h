// Loops of a face on their way to being rings: chained in the parameters of the surface, measured, nested.
// The steps of ResolveFace; nobody else needs them.
#pragma once

#include <vector>

#include <gp_XY.hxx>

#include "sdk/brep/ResolvedFace.h"

namespace cadex::brep {

/// A ring that is not finished: it may still go round the surface without coming back.
struct OpenRing
{
    std::vector<RingUse> uses;
    int winding[2] = {0, 0};    ///< times it goes round in u and v
    std::vector<gp_XY> outline; ///< its course in the parameters, by points; the end is not repeated
    double area = 0;            ///< of the outline, positive when counter-clockwise
    double low[2] = {0, 0};
    double high[2] = {0, 0};

    bool IsWinding() const { return winding[0] != 0 || winding[1] != 0; }
};

/// What the steps work on.
struct Resolution
{
    const Body& body;
    const Surface& surface;
    ResolvedFace& face;

    const gp_Pnt& PointOf(int vertex) const { return face.VertexOf(body, vertex).point; }
    /// The vertex of the face's edges and loops at the point; a new one of the face's own when there is none.
    int VertexAt(const gp_Pnt& point, const std::vector<OpenRing>& rings);
    int AddVertex(const gp_Pnt& point);
};

/// Shifts each curve by whole periods to where the one before ends, leads the ring along poles, and counts
/// how often it goes round.
ResolveStatus Chain(Resolution& resolution, OpenRing& ring);

/// The course of uses in the parameters of the face's surface, by points: enough of a curve for its course.
std::vector<gp_XY> OutlineOf(const Body& body, const ResolvedFace& face, const std::vector<RingUse>& uses);

/// Outline, area and bounds.
void Measure(const Resolution& resolution, OpenRing& ring);

void ShiftRing(OpenRing& ring, const gp_Vec2d& by);
void TurnRing(OpenRing& ring);

/// Whether the point lies in the outline.
bool IsInside(const std::vector<gp_XY>& outline, const gp_XY& point);

/// The rings in their order, with holes moved by periods into the outer ring they belong to; turns rings that
/// run the wrong way round where that is the only reading.
ResolveStatus Nest(Resolution& resolution, std::vector<OpenRing>&& rings);

/// A step along a pole from one place to another, on the line where the `fixed` parameter has its level.
RingUse PoleUse(const gp_Pnt2d& from, const gp_Pnt2d& to, int vertex);

} // namespace cadex::brep
