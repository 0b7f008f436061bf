#include "tests/sdk/step/MeshFacts.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/ModelData_PolyRepresentation.hxx>
#include <cadex/internal/Reports.hxx>

#include "tests/sdk/MeshModels.h"
#include "tests/sdk/ReadModels.h"

namespace cadex::test {
namespace {

using Vec = std::array<double, 3>;

Vec Minus(const ModelData_Point& a, const ModelData_Point& b)
{
    return {a.X() - b.X(), a.Y() - b.Y(), a.Z() - b.Z()};
}

Vec Cross(const Vec& a, const Vec& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Dot(const Vec& a, const Vec& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

class Measure : public ModelData_Model::VoidElementVisitor
{
public:
    explicit Measure(MeshFacts& facts) : myFacts(facts)
    {
        myFacts.low.fill(std::numeric_limits<double>::max());
        myFacts.high.fill(std::numeric_limits<double>::lowest());
    }

    void operator()(const ModelData_Part& part) override
    {
        if (!mySeen.insert(part.Impl()).second) {
            return;
        }
        ++myFacts.parts;
        ModelAlgo_ValidationPropertyData data;
        if (ModelAlgo_ValidationProperty::ComputeValidationProperties(part, data)) {
            myFacts.mass += data.Volume();
        }
        myPlaces.clear();
        myEdges.clear();
        const ModelData_PolyRepresentation mesh = part.PolyRepresentation(ModelData_RM_Poly);
        for (std::size_t i = 0; !mesh.IsNull() && i < mesh.Get().Size(); ++i) {
            const ModelData_PolyVertexSet& set = mesh.Get()[i];
            if (set.IsOfType<ModelData_IndexedTriangleSet>()) {
                Add(static_cast<const ModelData_IndexedTriangleSet&>(set));
            } else if (set.IsOfType<ModelData_PolyLineSet>()) {
                Add(static_cast<const ModelData_PolyLineSet&>(set));
            }
        }
        CountOpenEdges();
    }

    void CountOpenEdges()
    {
        for (const auto& edge : myEdges) {
            myFacts.openEdges += edge.second != 0 ? 1 : 0;
        }
    }

    /// Gives its normal, twice as long as its area.
    Vec AddTriangle(const std::array<ModelData_Point, 3>& p)
    {
        std::array<int, 3> place{};
        for (std::size_t k = 0; k < 3; ++k) {
            place[k] = PlaceOf(p[k]);
            const Vec c = {p[k].X(), p[k].Y(), p[k].Z()};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                myFacts.low[axis] = std::min(myFacts.low[axis], c[axis]);
                myFacts.high[axis] = std::max(myFacts.high[axis], c[axis]);
            }
        }
        const Vec normal = Cross(Minus(p[1], p[0]), Minus(p[2], p[0]));
        myFacts.area += std::sqrt(Dot(normal, normal)) / 2;
        myFacts.volume += Dot({p[0].X(), p[0].Y(), p[0].Z()}, normal) / 6;
        ++myFacts.triangles;
        for (std::size_t k = 0; k < 3; ++k) {
            const int a = place[k];
            const int b = place[(k + 1) % 3];
            if (a != b) {
                myEdges[std::minmax(a, b)] += a < b ? 1 : -1;
            }
        }
        return normal;
    }

private:
    int PlaceOf(const ModelData_Point& point)
    {
        constexpr double Grid = 1e6;
        const auto round = [](double value) { return std::llround(value * Grid); };
        const auto size = static_cast<int>(myPlaces.size());
        return myPlaces.try_emplace({round(point.X()), round(point.Y()), round(point.Z())}, size)
            .first->second;
    }

    void Add(const ModelData_IndexedTriangleSet& set)
    {
        for (int face = 0; face < set.NumberOfFaces(); ++face) {
            const Vec normal =
                AddTriangle({set.Coordinate(face, 0), set.Coordinate(face, 1), set.Coordinate(face, 2)});
            for (int k = 0; set.HasNormals() && k < 3; ++k) {
                const ModelData_Vectorf n = set.VertexNormal(face, k);
                const Vec given = {static_cast<double>(n.X()), static_cast<double>(n.Y()),
                                   static_cast<double>(n.Z())};
                myFacts.normals.push_back(given);
                myFacts.against += Dot(given, normal) < 0 ? 1 : 0;
            }
        }
    }

    void Add(const ModelData_PolyLineSet& set)
    {
        for (int line = 0; line < set.NumberOfPolyLines(); ++line) {
            for (int i = 1; i < set.NumberOfVertices(line); ++i) {
                const Vec way = Minus(set.Coordinate(line, i), set.Coordinate(line, i - 1));
                myFacts.length += std::sqrt(Dot(way, way));
            }
        }
    }

    MeshFacts& myFacts;
    std::set<const void*> mySeen;
    std::map<std::tuple<long long, long long, long long>, int> myPlaces;
    std::map<std::pair<int, int>, int> myEdges;
};

} // namespace

MeshFacts FileFacts(const std::string& path)
{
    MeshFacts facts;
    ModelData_Model model;
    internal::Reports::Clear();
    facts.isRead = Import(path, model);
    if (facts.isRead) {
        Measure measure(facts);
        model.Accept(measure);
        facts.outline = Outline::Of(model);
    }
    for (const internal::Report& report : internal::Reports::Take()) {
        if (report.kind == internal::Report::Kind::LeftOut ||
            report.kind == internal::Report::Kind::Refused) {
            facts.reports += report.text + " #" + std::to_string(report.record) + "\n";
        }
    }
    return facts;
}

MeshFacts TriangleFacts(const std::vector<double>& positions, const std::vector<int>& indices)
{
    MeshFacts facts;
    Measure measure(facts);
    const auto point = [&](std::size_t corner) {
        const double* c = &positions[3 * static_cast<std::size_t>(indices[corner])];
        return ModelData_Point(c[0], c[1], c[2]);
    };
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        measure.AddTriangle({point(i), point(i + 1), point(i + 2)});
    }
    measure.CountOpenEdges();
    return facts;
}

MeshFacts ImportFacts(const std::string& text)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path() / "file.stp", text);
    return FileFacts((folder.Path() / "file.stp").string());
}

} // namespace cadex::test
