#include "sdk/ifc/IfcShapeWriter.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <cadex/ModelData_PolyRepresentation.hxx>

#include "sdk/ifc/IfcProperties.h"
#include "sdk/mesh/MeshTopology.h"

namespace cadex::ifc {

using internal::ImplOf;
using mesh::Determinant;
using mesh::Mapped;
using mesh::MeshTopology;
using mesh::Vector3;
using part21::AppendPart21String;
using part21::Part21Real;
using part21::Part21TimeStamp;
using part21::Raw;
using part21::Xyz;
namespace {

bool IsFinite(const Vector3& point)
{
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

float Channel(float value, float fallback)
{
    return std::isfinite(value) ? std::clamp(value, 0.F, 1.F) : fallback;
}

} // namespace

ShapeWriter::Items ShapeWriter::Write(const ModelData_Part& part, const Matrix3& linear)
{
    Items items;
    const ModelData_PolyRepresentation poly = part.PolyRepresentation(ModelData_RM_Poly);
    const ModelData_PolyShapeList& shapes = poly.Get();
    for (std::size_t i = 0; i < shapes.Size() && myOut.Ok(); ++i) {
        const ModelData_PolyVertexSet& set = shapes[i];
        const bool surface = set.IsOfType<ModelData_IndexedTriangleSet>();
        Ref item;
        if (surface) {
            item = WriteMesh(ImplOf(static_cast<const ModelData_IndexedTriangleSet&>(set)), linear);
        } else if (set.IsOfType<ModelData_PolyLineSet>()) {
            item = WriteLines(ImplOf(static_cast<const ModelData_PolyLineSet&>(set)), linear);
        }
        if (item) {
            (surface ? items.faces : items.curves).push_back(item);
            const ModelData_Appearance own = set.Appearance();
            Style(item, own.IsNull() ? part.Appearance() : own, surface);
        }
    }
    return items;
}

Ref ShapeWriter::WriteMesh(const TriangleSetImpl& mesh, const Matrix3& linear)
{
    const MeshTopology topology(mesh, linear);
    if (topology.triangles.empty()) {
        return {};
    }
    const Ref points = myOut.Reserve();
    myOut.Begin(points);
    myOut.Text("IFCCARTESIANPOINTLIST3D((");
    for (std::size_t i = 0; i < topology.pointOf.size(); ++i) {
        const Vector3 point = Mapped(linear, mesh.points[topology.pointOf[i]]);
        myOut.Text(i == 0 ? "" : ",");
        myOut.Put(Xyz{point[0], point[1], point[2]});
    }
    myOut.Text("))");
    myOut.End();

    const bool closed = std::all_of(topology.pieces.begin(), topology.pieces.end(),
                                    [](const MeshTopology::Piece& piece) { return piece.closed; });
    const bool mirrored = Determinant(linear) < 0;
    const Ref faces = myOut.Reserve();
    myOut.Begin(faces);
    myOut.Text("IFCTRIANGULATEDFACESET(");
    myOut.Put(points);
    myOut.Text(closed ? ",$,.T.,(" : ",$,.F.,(");
    for (std::size_t i = 0; i < topology.triangles.size(); ++i) {
        const MeshTopology::Corners v = topology.CornersOf(mesh, topology.triangles[i]);
        const MeshTopology::Corners indices{v[0] + 1, v[mirrored ? 2 : 1] + 1, v[mirrored ? 1 : 2] + 1};
        myOut.Text(i == 0 ? "" : ",");
        myOut.Put(indices);
    }
    myOut.Text("),$)");
    myOut.End();
    return faces;
}

Ref ShapeWriter::WriteLines(const PolyLineSetImpl& lines, const Matrix3& linear)
{
    std::vector<Ref> curves;
    std::vector<Vector3> points;
    const auto flush = [&] {
        if (points.size() > 1) {
            std::vector<Ref> refs;
            refs.reserve(points.size());
            for (const Vector3& point : points) {
                refs.push_back(myOut.Add("IFCCARTESIANPOINT", Xyz{point[0], point[1], point[2]}));
            }
            curves.push_back(myOut.Add("IFCPOLYLINE", refs));
        }
        points.clear();
    };
    for (std::size_t line = 0; line + 1 < lines.starts.size() && myOut.Ok(); ++line) {
        // segments that go on where the last one ended are one polyline
        const std::size_t first = lines.starts[line];
        if (first == lines.starts[line + 1] || points.empty() ||
            Mapped(linear, lines.points[first]) != points.back()) {
            flush();
        }
        for (std::size_t i = first; i < lines.starts[line + 1]; ++i) {
            const Vector3 point = Mapped(linear, lines.points[i]);
            if (IsFinite(point) && (points.empty() || point != points.back())) {
                points.push_back(point);
            }
        }
    }
    flush();
    return curves.empty() ? Ref() : myOut.Add("IFCGEOMETRICCURVESET", curves);
}

void ShapeWriter::Style(Ref item, const ModelData_Appearance& appearance, bool surface)
{
    ModelData_Material material;
    if (appearance.IsNull() || !appearance.ToMaterial(material)) {
        return;
    }
    const ModelData_Color& diffuse = material.DiffuseColor();
    const ModelData_Color& specular = material.SpecularColor();
    std::array<float, 7> look{Channel(diffuse.R(), 0),
                              Channel(diffuse.G(), 0),
                              Channel(diffuse.B(), 0),
                              Channel(diffuse.A(), 1),
                              0,
                              0,
                              0};
    if (surface) {
        look[4] = Channel(specular.R(), 0);
        look[5] = Channel(specular.G(), 0);
        look[6] = Channel(specular.B(), 0);
    }
    Ref& style = (surface ? mySurfaceStyles : myCurveStyles)[look];
    if (!style) {
        style = surface ? SurfaceStyle(look) : CurveStyle(look);
    }
    myOut.Add("IFCSTYLEDITEM", item, std::array{style}, Raw{"$"});
}

Ref ShapeWriter::Colour(float red, float green, float blue)
{
    return myOut.Add("IFCCOLOURRGB", Raw{"$"}, red, green, blue);
}

Ref ShapeWriter::SurfaceStyle(const std::array<float, 7>& look)
{
    const Ref colour = Colour(look[0], look[1], look[2]);
    const bool shines = look[4] > 0 || look[5] > 0 || look[6] > 0;
    const Ref specular = shines ? Colour(look[4], look[5], look[6]) : Ref();
    const Ref rendering = myOut.Add("IFCSURFACESTYLERENDERING", colour, 1 - look[3], Raw{"$"}, Raw{"$"},
                                    Raw{"$"}, Raw{"$"}, specular, Raw{"$"}, Raw{".NOTDEFINED."});
    return myOut.Add("IFCSURFACESTYLE", Raw{"$"}, Raw{".BOTH."}, std::array{rendering});
}

Ref ShapeWriter::CurveStyle(const std::array<float, 7>& look)
{
    return myOut.Add("IFCCURVESTYLE", Raw{"$"}, Raw{"$"}, Raw{"$"}, Colour(look[0], look[1], look[2]),
                     Raw{"$"});
}

namespace {

class PropertyWriter final : public ModelData_PropertyTable::Visitor
{
public:
    explicit PropertyWriter(Part21Writer& out) : myOut(out) {}

    std::vector<std::vector<Ref>> sets;
    std::string globalId;

    void operator()(const Base_UTF16String& name, I32 value) override
    {
        (*this)(name, static_cast<I64>(value));
    }
    void operator()(const Base_UTF16String& name, I64 value) override
    {
        Add(name, "IFCINTEGER(" + std::to_string(value) + ")");
    }
    void operator()(const Base_UTF16String& name, float value) override { AddReal(name, value); }
    void operator()(const Base_UTF16String& name, double value) override { AddReal(name, value); }
    void operator()(const Base_UTF16String& name, ModelData_PropertyTable::TimeType value) override
    {
        AddText(name, Base_UTF16String(Part21TimeStamp(value.myValue).c_str()));
    }
    void operator()(const Base_UTF16String& name, const Base_UTF16String& value) override
    {
        if (name == Base_UTF16String("GlobalId") && IsGuid(value.ToUTF8())) {
            globalId = value.ToUTF8();
            return;
        }
        AddText(name, value);
    }
    void operator()(const Base_UTF16String& name, const ModelData_Point& value) override
    {
        AddText(name, Text(value));
    }
    void operator()(const Base_UTF16String& name, const ModelData_Box& value) override
    {
        AddText(name, Text(value.MinCorner()) + Base_UTF16String(" - ") + Text(value.MaxCorner()));
    }

private:
    static Base_UTF16String Text(const ModelData_Point& point)
    {
        const std::string text =
            NumberText(point.X()) + ' ' + NumberText(point.Y()) + ' ' + NumberText(point.Z());
        return {text.c_str()};
    }

    template <typename T>
    void AddReal(const Base_UTF16String& name, T value)
    {
        std::isfinite(value) ? Add(name, "IFCREAL(" + Part21Real(value) + ")")
                             : AddText(name, std::isnan(value) ? "nan" : (value > 0 ? "inf" : "-inf"));
    }

    void AddText(const Base_UTF16String& name, const Base_UTF16String& text)
    {
        // NOTE: a label may have 255 characters, a text any number
        std::string value(text.Length() > 255 ? "IFCTEXT(" : "IFCLABEL(");
        AppendPart21String(value, text);
        Add(name, value + ")");
    }

    void Add(const Base_UTF16String& name, const std::string& value)
    {
        const std::size_t set = myUses[name.ToUTF8()]++;
        if (set >= sets.size()) {
            sets.emplace_back();
        }
        sets[set].push_back(myOut.Add("IFCPROPERTYSINGLEVALUE", name, Raw{"$"}, Raw{value}, Raw{"$"}));
    }

    Part21Writer& myOut;
    std::map<std::string, std::size_t> myUses;
};

} // namespace

PropertySets WritePropertySets(Part21Writer& out, const ModelData_PropertyTable& first,
                               const ModelData_PropertyTable& second, const GuidKey& key)
{
    PropertyWriter writer(out);
    first.Accept(writer);
    second.Accept(writer);
    PropertySets result;
    result.globalId = writer.globalId;
    for (std::size_t i = 0; i < writer.sets.size(); ++i) {
        const std::string name =
            std::string(PlainSetName) + (i == 0 ? std::string() : " (" + std::to_string(i + 1) + ")");
        result.sets.push_back(
            out.Add("IFCPROPERTYSET", key.Child("set", i).Text(), Raw{"$"}, name, Raw{"$"}, writer.sets[i]));
    }
    return result;
}

} // namespace cadex::ifc
