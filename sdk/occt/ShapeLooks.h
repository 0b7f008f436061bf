// Which face of a shape, and which loose curve, looks how.
#pragma once

#include <NCollection_DataMap.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS_Shape.hxx>

#include <cadex/ModelData_Appearance.hxx>

namespace cadex::occt {

class OcctBRep;

/// Appearances that a file gives to shapes of any kind: solids, shells, faces, wires, edges, compounds.
class ShapeLooks
{
public:
    /// Gives a shape its look; a later call for the same shape replaces it. Null appearances leave open what
    /// faces, or curves, look like.
    void Set(const TopoDS_Shape& shape, const ModelData_Appearance& surface,
             const ModelData_Appearance& curve);
    bool IsEmpty() const { return myLooks.IsEmpty(); }

    /// Fills the appearances of a body from what is set for its shape and all shapes in it; the more
    /// particular one counts (a face's before its solid's). `whole` is the look of what has no other; null
    /// when there is none. When all faces and loose curves look alike, that is the body's appearance and no
    /// single one is kept.
    void Apply(OcctBRep& body, const ModelData_Appearance& whole) const;

private:
    struct Look
    {
        ModelData_Appearance surface;
        ModelData_Appearance curve;
    };
    struct Leaves;

    const Look* Find(const TopoDS_Shape& shape) const;
    void Visit(const TopoDS_Shape& shape, Look look, int depth, Leaves& leaves) const;

    NCollection_DataMap<TopoDS_Shape, Look, TopTools_ShapeMapHasher> myLooks;
};

} // namespace cadex::occt
