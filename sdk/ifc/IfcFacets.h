// Bodies bounded by polygons: faceted B-reps, surface models and tessellated face sets.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <TopoDS_Shape.hxx>

#include <cadex/Base_Types.hxx>
#include <cadex/ModelData_Vector.hxx>

#include "sdk/ifc/IfcContext.h"

namespace cadex::ifc {

/// Planar faces with holes over shared points, flat in memory. Loops run counter-clockwise seen from outside,
/// holes the other way round.
class Polyhedron
{
public:
    struct Loop
    {
        U32 first; ///< of its corners
        U32 count;
        bool outer; ///< starts a face; the inner loops behind it are its holes
    };

    std::vector<gp_XYZ> points;             ///< millimetres
    std::vector<ModelData_Vectorf> normals; ///< none, or one for each point
    std::vector<U32> corners;               ///< into points
    std::vector<Loop> loops;
    std::vector<std::size_t> shells; ///< loops at which a further shell starts: another body, or a cavity
    bool closed = false;

    void BeginLoop(bool outer) { loops.push_back({static_cast<U32>(corners.size()), 0, outer}); }
    void AddCorner(U32 point);
    /// Forgets the last loop.
    void DropLoop();
    void AddFace(const std::vector<U32>& outline);
    std::size_t NumberOfFaces() const;
    /// The end of the face that starts at this loop: the index of the next outer loop.
    std::size_t FaceEnd(std::size_t loop) const;
    /// The loops of each shell, as [first, end).
    std::vector<std::array<std::size_t, 2>> Shells() const;
    /// Six times the volume that the loops enclose; below zero when they face inwards.
    double SignedVolume(std::size_t firstLoop, std::size_t endLoop) const;
    /// Turns faces round.
    void Reverse(std::size_t firstLoop, std::size_t endLoop);
    void Reverse() { Reverse(0, loops.size()); }
    void Move(const Affine& placement);
};

/// IfcFacetedBrep, shells and face sets with poly loops, IfcTriangulatedFaceSet and IfcPolygonalFaceSet.
/// Faces that are damaged are left out; a closed body that was given inside out is turned round.
Polyhedron ReadPolyhedron(Context& context, const Entity& item);

/// All faces of the shell are bounded by poly loops, so that ReadPolyhedron can take it.
bool IsFaceted(Context& context, const Entity& shell);

/// Triangles (three indices into points each) that fill the faces; none without area.
std::vector<U32> Triangulate(Context& context, const Polyhedron& body);

/// The triangles of one face. See IfcTriangulate.cpp.
void TriangulateFace(Context& context, const Polyhedron& body, std::size_t firstLoop, std::size_t endLoop,
                     std::vector<U32>& triangles);

/// Twice the area of a loop as a vector along its normal.
gp_XYZ AreaVector(const Polyhedron& body, const Polyhedron::Loop& loop);

/// A kernel shape with shared edges: a solid when the body is closed, else a shell. Faces that are not flat
/// are split into triangles.
TopoDS_Shape ShapeOf(const Polyhedron& body);

/// The polygons of a shape of solids whose faces are all planes and whose edges are all lines; false for any
/// other.
bool FacetsOf(const TopoDS_Shape& shape, Polyhedron& body);

/// IfcAdvancedBrep, and shells of faces with curved edges or surfaces. See IfcSurfaces.cpp.
TopoDS_Shape ReadAdvancedBrep(Context& context, const Entity& item);
TopoDS_Shape ReadAdvancedShell(Context& context, const Entity& shell);
/// A bounded surface that stands for itself: curve-bounded planes, faces.
TopoDS_Shape ReadSurfaceItem(Context& context, const Entity& surface);

} // namespace cadex::ifc
