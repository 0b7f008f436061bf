#include "tests/sdk/ifc/ReadBack.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include <cadex/IFC_Reader.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/ModelData_PropertyTable.hxx>
#include <cadex/internal/Reports.hxx>

namespace ifctest {
namespace {

using namespace cadex;

struct PropertyTexts : ModelData_PropertyTable::Visitor
{
    std::map<std::string, std::string> texts;
    void Put(const Base_UTF16String& name, const std::string& text) { texts[name.ToUTF8()] = text; }
    void operator()(const Base_UTF16String& name, I32 value) override { Put(name, std::to_string(value)); }
    void operator()(const Base_UTF16String& name, I64 value) override { Put(name, std::to_string(value)); }
    void operator()(const Base_UTF16String& name, float value) override { Put(name, std::to_string(value)); }
    void operator()(const Base_UTF16String& name, double value) override { Put(name, std::to_string(value)); }
    void operator()(const Base_UTF16String&, ModelData_PropertyTable::TimeType) override {}
    void operator()(const Base_UTF16String& name, const Base_UTF16String& value) override
    {
        Put(name, value.ToUTF8());
    }
    void operator()(const Base_UTF16String&, const ModelData_Point&) override {}
    void operator()(const Base_UTF16String&, const ModelData_Box&) override {}
};

std::array<float, 4> ColourOf(const ModelData_Appearance& appearance)
{
    ModelData_Material material;
    if (appearance.IsNull() || !appearance.ToMaterial(material)) {
        return {-1, -1, -1, -1};
    }
    const ModelData_Color& c = material.DiffuseColor();
    return {c.R(), c.G(), c.B(), c.A()};
}

using Corner = std::array<long long, 3>; ///< in hundredths of a micrometre
using Placement = std::array<std::array<double, 4>, 3>;

class Collector : public ModelData_Model::ElementVisitor
{
public:
    explicit Collector(std::vector<Node>& nodes) : myNodes(nodes) {}

    bool VisitEnter(const ModelData_Assembly& assembly) override
    {
        Enter('A', assembly);
        return true;
    }
    void VisitLeave(const ModelData_Assembly&) override { myPath.pop_back(); }
    bool VisitEnter(const ModelData_Instance& instance) override
    {
        Enter('I', instance);
        Placement placement = myPlacements.back();
        if (instance.HasTransformation()) {
            const Placement outer = placement;
            for (std::size_t r = 0; r < 3; ++r) {
                for (std::size_t c = 0; c < 4; ++c) {
                    placement[r][c] = c == 3 ? outer[r][3] : 0;
                    for (std::size_t k = 0; k < 3; ++k) {
                        placement[r][c] += outer[r][k] * instance.Transformation().Data(static_cast<int>(k),
                                                                                        static_cast<int>(c));
                    }
                }
            }
        }
        myPlacements.push_back(placement);
        return true;
    }
    void VisitLeave(const ModelData_Instance&) override
    {
        myPath.pop_back();
        myPlacements.pop_back();
    }
    void operator()(const ModelData_Part& part) override
    {
        Enter('P', part);
        myPath.pop_back();
        Node& node = myNodes.back();
        node.part = part.Impl();
        node.exact = !part.BRepRepresentation().IsNull();
        ModelAlgo_ValidationPropertyData data;
        if (node.exact && ModelAlgo_ValidationProperty::ComputeValidationProperties(part, data)) {
            node.solid = data.Volume();
        }
        std::map<std::pair<Corner, Corner>, int> edges;
        const ModelData_PolyRepresentation poly = part.PolyRepresentation(ModelData_RM_Poly);
        for (std::size_t i = 0; i < poly.Get().Size(); ++i) {
            const ModelData_PolyVertexSet& set = poly.Get()[i];
            for (int v = 0; v < set.NumberOfVertices(); ++v) {
                const std::array<double, 3> p = Placed(set.Coordinate(v));
                for (std::size_t k = 0; k < 3; ++k) {
                    node.low[k] = std::min(node.low[k], p[k]);
                    node.high[k] = std::max(node.high[k], p[k]);
                }
            }
            if (set.IsOfType<ModelData_PolyLineSet>()) {
                node.polylines += static_cast<const ModelData_PolyLineSet&>(set).NumberOfPolyLines();
            } else {
                AddTriangles(static_cast<const ModelData_IndexedTriangleSet&>(set), node, edges);
            }
        }
        for (const auto& [edge, balance] : edges) {
            node.openEdges += std::abs(balance);
        }
    }

private:
    void Enter(char kind, const ModelData_SceneGraphElement& element)
    {
        Node node;
        node.kind = kind;
        node.name = element.Name().ToUTF8();
        node.path = (myPath.empty() ? "" : myPath.back() + "/") + node.name;
        node.colour = ColourOf(element.Appearance());
        PropertyTexts texts;
        element.Properties().Accept(texts);
        node.properties = texts.texts;
        myPath.push_back(node.path);
        myNodes.push_back(node);
    }

    std::array<double, 3> Placed(const ModelData_Point& p) const
    {
        std::array<double, 3> result{};
        for (std::size_t r = 0; r < 3; ++r) {
            const std::array<double, 4>& row = myPlacements.back()[r];
            result[r] = row[0] * p.X() + row[1] * p.Y() + row[2] * p.Z() + row[3];
        }
        return result;
    }

    static bool FacesOutwards(const ModelData_IndexedTriangleSet& set, int face, int corner)
    {
        const ModelData_Point& a = set.Coordinate(face, 0);
        const ModelData_Point& b = set.Coordinate(face, 1);
        const ModelData_Point& c = set.Coordinate(face, 2);
        const double u[] = {b.X() - a.X(), b.Y() - a.Y(), b.Z() - a.Z()};
        const double v[] = {c.X() - a.X(), c.Y() - a.Y(), c.Z() - a.Z()};
        const ModelData_Vectorf& n = set.VertexNormal(face, corner);
        return n.X() * (u[1] * v[2] - u[2] * v[1]) + n.Y() * (u[2] * v[0] - u[0] * v[2]) +
                   n.Z() * (u[0] * v[1] - u[1] * v[0]) >
               0;
    }

    /// Counts the edge up in one direction and down in the other; two that cover each other leave zero.
    static void Count(const std::array<double, 3>& from, const std::array<double, 3>& to,
                      std::map<std::pair<Corner, Corner>, int>& edges)
    {
        const auto rounded = [](const std::array<double, 3>& p) {
            return Corner{std::llround(p[0] * 1e5), std::llround(p[1] * 1e5), std::llround(p[2] * 1e5)};
        };
        const Corner a = rounded(from);
        const Corner b = rounded(to);
        if (a != b) {
            edges[std::minmax(a, b)] += a < b ? 1 : -1;
        }
    }

    void AddTriangles(const ModelData_IndexedTriangleSet& set, Node& node,
                      std::map<std::pair<Corner, Corner>, int>& edges) const
    {
        node.triangles += set.NumberOfFaces();
        node.setColours.push_back(ColourOf(set.Appearance()));
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            for (int corner = 0; corner < 3 && set.HasNormals(); ++corner) {
                node.normals += FacesOutwards(set, face, corner) ? 1 : 0;
            }
            const auto a = Placed(set.Coordinate(face, 0));
            const auto b = Placed(set.Coordinate(face, 1));
            const auto c = Placed(set.Coordinate(face, 2));
            node.enclosed += (a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
                              a[2] * (b[0] * c[1] - b[1] * c[0])) /
                             6;
            const double u[] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
            const double v[] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
            node.area +=
                std::hypot(u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]) /
                2;
            Count(a, b, edges);
            Count(b, c, edges);
            Count(c, a, edges);
        }
    }

    std::vector<Node>& myNodes;
    std::vector<std::string> myPath;
    std::vector<Placement> myPlacements{{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}}};
};

} // namespace

ReadBack::ReadBack(const std::string& text)
{
    internal::Reports::Clear();
    IFC_Reader reader;
    std::istringstream stream(text);
    ModelData_Model model;
    read = reader.ReadFile(stream);
    transferred = read && reader.Transfer(model);
    if (transferred) {
        ModelAlgo_BRepMesher(ModelAlgo_BRepMesherParameters(ModelAlgo_BRepMesherParameters::Fine))
            .Compute(model, true);
        Collector collector(nodes);
        model.Accept(collector);
    }
    for (const internal::Report& report : internal::Reports::Take()) {
        reports.push_back(report.text);
    }
}

std::vector<const Node*> ReadBack::Parts() const
{
    std::vector<const Node*> parts;
    for (const Node& node : nodes) {
        if (node.kind == 'P') {
            parts.push_back(&node);
        }
    }
    return parts;
}

const Node* ReadBack::Named(const std::string& name, char kind) const
{
    for (const Node& node : nodes) {
        if (node.name == name && node.kind == kind) {
            return &node;
        }
    }
    return nullptr;
}

} // namespace ifctest
