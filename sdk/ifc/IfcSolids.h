// Solids and sheets of IFC as shapes of the geometry kernel, in millimetres and in the coordinates of the
// item.
#pragma once

#include <map>
#include <vector>

#include <Bnd_Box.hxx>
#include <TopoDS_Shape.hxx>

#include "sdk/ifc/IfcFacets.h"
#include "sdk/ifc/IfcProfiles.h"

namespace cadex {
namespace internal {
namespace ifc {

/// IfcSweptAreaSolid, IfcSweptDiskSolid, IfcCsgPrimitive3D, IfcCsgSolid, IfcBooleanResult,
/// IfcManifoldSolidBrep in all their kinds, and half spaces only as operands. Unbuildable for anything else.
/// Equal ids give one shared shape.
class SolidReader
{
public:
    explicit SolidReader(Context& context) : myContext(context) {}

    TopoDS_Shape Read(const Entity& item);
    /// A kind that Read knows.
    static bool IsSolid(Type type);

private:
    TopoDS_Shape ReadAny(const Entity& item);
    TopoDS_Shape ReadBoolean(const Entity& item);
    TopoDS_Shape ReadOperand(const Entity& item, const Bnd_Box& other);

    Context& myContext;
    std::map<Id, TopoDS_Shape> myBooleans; ///< operands may be shared: a tree of n levels stays n operations
    int myDepth = 0;
};

/// An IfcExtrudedAreaSolid of straight outlines as polygons, which needs a hundredth of a shape's memory;
/// false for any other solid.
bool ReadPrism(Context& context, const Entity& solid, Polyhedron& body);
TopoDS_Shape ReadSweptArea(Context& context, const Entity& solid);
TopoDS_Shape ReadSweptDisk(Context& context, const Entity& solid);
TopoDS_Shape ReadPrimitive(Context& context, const Entity& primitive);
/// The part of a half space that can meet a body within the box, as a solid.
TopoDS_Shape ReadHalfSpace(Context& context, const Entity& halfSpace, const Bnd_Box& body);

enum class BooleanKind
{
    Cut,
    Fuse,
    Common
};
/// The operation on one body and its tools. False when the kernel fails or what comes out is no body of the
/// kind that went in; `result` is then the body as it was, which is the fallback: better uncut than lost.
bool Combine(BooleanKind kind, const TopoDS_Shape& body, const std::vector<TopoDS_Shape>& tools,
             TopoDS_Shape& result);

Bnd_Box BoundsOf(const TopoDS_Shape& shape);

} // namespace ifc
} // namespace internal
} // namespace cadex
