// The edges of a body as polylines: each is divided once, for all the faces around it, so that the triangles
// of neighbouring faces meet in the same points.
//
//     EdgeDiscretisation edges(body, tolerances, SizeOf(body));
//     edges.Divide(3);
//     const EdgePolyline& line = edges.Of(3);
//     for (std::size_t i = 0; i < line.parameters.size(); ++i) { ... edges.Point(edges.NumberOf(3, i)) ... }
#pragma once

#include <cstddef>
#include <vector>

#include <gp_Pnt.hxx>

#include "sdk/brep/Body.h"
#include "sdk/occt/ShapeMesher.h"

namespace cadex::brep {

/// Largest extent of what the faces of the body occupy, in millimetres, by which relative chords are
/// measured; not below 1e-9. By samples of the edges, and of surfaces that have no edges.
double SizeOf(const Body& body);

/// Chord in millimetres for a curve of the given extent on a body of the given size. NOTE: the rule is that
/// of the kernel's mesher, so that both give like densities: the chord refers to the edge, and by at most
/// twice (half) as much to the body.
double ChordFor(const occt::MeshTolerances& tolerances, double extent, double bodySize);

/// Parameters of the points that divide an edge, ends included.
struct EdgePolyline
{
    std::vector<double> parameters = {}; ///< increasing; empty when the edge is not divided
    int firstInner = None;               ///< number of the first point between the ends
    double chord = 0;                    ///< millimetres
};

/// Divides a piece of curve so that neither chord nor angle is exceeded: a loose curve. A line gives its
/// ends, a polygonal spline its corners.
EdgePolyline DivideCurve(const BodyEdge& edge, const occt::MeshTolerances& tolerances, double bodySize);

/// Likewise an edge of faces, to half the chord and half the angle.
EdgePolyline DivideEdge(const BodyEdge& edge, const occt::MeshTolerances& tolerances, double bodySize);

/// Points on the vertices and edges of a body, numbered through: the vertices come first, with their own
/// numbers.
class EdgeDiscretisation
{
public:
    EdgeDiscretisation(const Body& body, const occt::MeshTolerances& tolerances, double bodySize);

    /// Divides the edge unless that is done. Not for edges that are not usable.
    void Divide(int edge);
    /// Takes other parameters in place of those that Divide found; the ends must stay.
    void Refine(int edge, std::vector<double> parameters);

    const EdgePolyline& Of(int edge) const { return myLines[static_cast<std::size_t>(edge)]; }
    /// Number of the point at `place` in the parameters of a divided edge.
    int NumberOf(int edge, std::size_t place) const;
    const gp_Pnt& Point(int number) const { return myPoints[static_cast<std::size_t>(number)]; }
    const std::vector<gp_Pnt>& Points() const { return myPoints; }

    const occt::MeshTolerances& Tolerances() const { return myTolerances; }
    double BodySize() const { return myBodySize; }

private:
    void AddInner(int edge);

    const Body& myBody;
    const occt::MeshTolerances myTolerances;
    const double myBodySize;
    std::vector<gp_Pnt> myPoints;
    std::vector<EdgePolyline> myLines;
};

} // namespace cadex::brep
