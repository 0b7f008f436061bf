// Solids and sheets of IFC as shapes of the geometry kernel, in millimetres and in the coordinates of the
// item.
#pragma once

#include <map>
#include <vector>

#include <Bnd_Box.hxx>
#include <TopoDS_Shape.hxx>

#include "sdk/ifc/IfcFacets.h"
#include "sdk/ifc/IfcProfiles.h"

namespace cadex::ifc {

/// A solid in the form that it came in: polygons where all is flat, else a shape of the kernel.
class Solid
{
public:
    Solid() = default;
    explicit Solid(Polyhedron polygons) : myFlat(true), myFacets(std::move(polygons)) {}
    explicit Solid(TopoDS_Shape shape) : myShape(std::move(shape)) {}

    bool IsFlat() const { return myFlat; }
    const Polyhedron& Facets() const { return myFacets; } ///< of a flat one
    /// Built when it is first asked for, if need be.
    const TopoDS_Shape& Shape() const;
    Bnd_Box Bounds() const;

private:
    bool myFlat = false;
    Polyhedron myFacets;
    mutable TopoDS_Shape myShape;
};

/// IfcSweptAreaSolid, IfcSweptDiskSolid, IfcCsgPrimitive3D, IfcCsgSolid, IfcBooleanResult,
/// IfcManifoldSolidBrep in all their kinds, and half spaces only as operands. Unbuildable for anything else.
class SolidReader
{
public:
    explicit SolidReader(Context& context) : myContext(context) {}

    Solid Read(const Entity& item);
    /// A kind that Read knows.
    static bool IsSolid(Type type);

private:
    Solid ReadBoolean(const Entity& item);
    Solid ReadOperand(const Entity& item, const Bnd_Box& other);

    Context& myContext;
    std::map<Id, Solid> myBooleans; ///< operands may be shared: a tree of n levels stays n operations
    int myDepth = 0;
};

/// An IfcExtrudedAreaSolid of straight outlines as polygons, which needs a hundredth of a shape's memory;
/// false for any other solid.
bool ReadPrism(Context& context, const Entity& solid, Polyhedron& body);
/// Shapes of the kernel; polygons (see IfcLoft.h) for long ways and where the kernel fails.
Solid ReadSweptArea(Context& context, const Entity& solid);
Solid ReadSweptDisk(Context& context, const Entity& solid);
TopoDS_Shape ReadPrimitive(Context& context, const Entity& primitive);
/// The part of a half space that can meet a body within the box.
Polyhedron ReadHalfSpace(Context& context, const Entity& halfSpace, const Bnd_Box& body);

/// Polygons that become kernel shapes, to be cut or to stand beside curved ones, have no more faces than
/// this: the kernel would need minutes.
inline constexpr std::size_t MostFacesOfShape = 3000;

enum class BooleanKind
{
    Cut,
    Fuse,
    Common
};
/// The kernel's operation on one body and its tools, with the fuzziness of the file, less and more of it, and
/// then tool by tool, until what comes out is a body of the kind that went in, of a volume that can be
/// right. False when a tool fails all the same; `result` is then the body without it: better uncut than lost.
bool Combine(const Context& context, BooleanKind kind, TopoDS_Shape body,
             const std::vector<TopoDS_Shape>& tools, TopoDS_Shape& result);
/// The same on solids, without the kernel where all is flat.
bool Combine(Context& context, BooleanKind kind, const Solid& body, const std::vector<const Solid*>& tools,
             Solid& result);

} // namespace cadex::ifc
