// Geometry, looks and property sets of an IFC file that is being written.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include <cadex/ModelData_Appearance.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PropertyTable.hxx>

#include "sdk/ifc/IfcGuid.h"
#include "sdk/mesh/Placement.h"
#include "sdk/model/TriangleSets.h"
#include "sdk/part21/Part21Writer.h"

namespace cadex::ifc {

using internal::PolyLineSetImpl;
using internal::TriangleSetImpl;
using mesh::Matrix3;
using part21::Part21Writer;
using part21::Ref;

class ShapeWriter
{
public:
    explicit ShapeWriter(Part21Writer& out) : myOut(out) {}

    /// What a part's shape consists of: representation items, for the contexts that they belong to.
    struct Items
    {
        std::vector<Ref> faces;
        std::vector<Ref> curves;
    };
    /// Writes the part's triangle sets as IfcTriangulatedFaceSet and its polylines as IfcGeometricCurveSet,
    /// mapped into the file by `linear`, each with its style. Triangles without area and points that are not
    /// finite are left out.
    Items Write(const ModelData_Part& part, const Matrix3& linear);

private:
    Ref WriteMesh(const TriangleSetImpl& mesh, const Matrix3& linear);
    Ref WriteLines(const PolyLineSetImpl& lines, const Matrix3& linear);
    void Style(Ref item, const ModelData_Appearance& appearance, bool surface);
    Ref SurfaceStyle(const std::array<float, 7>& look);
    Ref CurveStyle(const std::array<float, 7>& look);
    Ref Colour(float red, float green, float blue);

    Part21Writer& myOut;
    std::map<std::array<float, 7>, Ref> mySurfaceStyles; ///< red, green, blue, alpha, specular
    std::map<std::array<float, 7>, Ref> myCurveStyles;
};

/// Property sets of one object.
struct PropertySets
{
    std::vector<Ref> sets;
    std::string globalId; ///< the property of that name, when it is one; it is then not in the sets
};

/// Writes the entries of both tables as IfcPropertySets called PlainSetName; a name that occurs again goes to
/// a further set, since names within one must differ.
PropertySets WritePropertySets(Part21Writer& out, const ModelData_PropertyTable& first,
                               const ModelData_PropertyTable& second, const GuidKey& key);

} // namespace cadex::ifc
