// Representation items as bodies, and bodies as parts of the model.
#pragma once

#include <cadex/ModelData_Part.hxx>

#include "sdk/ifc/IfcFacets.h"
#include "sdk/ifc/IfcSolids.h"
#include "sdk/ifc/IfcStyles.h"

namespace cadex::ifc {

/// What one item gives, in millimetres: a kernel shape, or polygons, or curves.
struct Body
{
    enum class Kind
    {
        Shape,
        Facets, ///< a B-rep whose faces are flat
        Mesh,   ///< a tessellation: polygons that stand for something else
        Curves
    };
    Kind kind = Kind::Shape;
    Id item = 0; ///< that it was read from
    TopoDS_Shape shape;
    Polyhedron facets;
    std::vector<Path> curves;
    ModelData_Appearance appearance; ///< null when the item has none of its own

    void Move(const Affine& placement);
};

class BodyReader
{
public:
    BodyReader(Context& context, const Relations& relations, StyleReader& styles)
        : myContext(context), myRelations(relations), myStyles(styles), mySolids(context)
    {
    }

    /// Appends the bodies of one item that is no mapped item. An item that cannot be built gives none, and is
    /// reported.
    void Read(const Entity& item, std::vector<Body>& bodies);
    /// Appends all bodies of a representation, those of mapped items moved to their places.
    void ReadFlat(const Entity& representation, const Affine& placement, std::vector<Body>& bodies,
                  int depth = 0);

private:
    void ReadItem(const Entity& item, std::vector<Body>& bodies);
    void ReadOther(const Entity& item, std::vector<Body>& bodies);
    void ReadShell(const Entity& shell, std::vector<Body>& bodies);
    void ReadFaceSet(const Entity& set, std::vector<Body>& bodies);
    void ReadCurveSet(const Entity& set, std::vector<Body>& bodies);
    void Split(const Entity& colourMap, Body&& body, std::vector<Body>& bodies);
    void AddCurve(const Entity& curve, Body& body);

    Context& myContext;
    const Relations& myRelations;
    StyleReader& myStyles;
    SolidReader mySolids;
};

/// Target o origin^-1 of an IfcMappedItem: where the representation map's own coordinates come to lie.
Affine MappingOf(const Context& context, const Entity& mappedItem);

/// Cuts the tools out of every body with a volume that they can meet. A body that cannot be cut stays whole,
/// and is reported.
void CutOpenings(Context& context, std::vector<Body>& bodies, const std::vector<Body>& tools);

/// The bodies as parts of that name: one for exact shapes with loose curves, one for facets, one for meshes
/// with curves; no part for what is absent. `fallback` is worn by bodies without an appearance of their own.
std::vector<ModelData_Part> MakeParts(Context& context, const Base_UTF16String& name,
                                      std::vector<Body>&& bodies, const ModelData_Appearance& fallback);

} // namespace cadex::ifc
