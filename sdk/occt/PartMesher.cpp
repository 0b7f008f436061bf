#include "sdk/occt/PartMesher.h"

#include <unordered_map>
#include <utility>
#include <vector>

#include <TopExp_Explorer.hxx>
#include <TopTools_MapOfShape.hxx>
#include <TopoDS.hxx>

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>

#include "sdk/occt/CurvePolylines.h"
#include "sdk/occt/MeshExtraction.h"

namespace cadex::occt {

namespace {

// Ends of loose curves that lie this near (millimetres) are one point.
constexpr double CurveTolerance = 1e-6;

/// Numbers appearances in the order in which they come; the body's own is number 0.
class AppearanceGroups
{
public:
    explicit AppearanceGroups(const ModelData_Appearance& first) { NumberOf(first); }

    std::size_t NumberOf(const ModelData_Appearance& appearance)
    {
        const auto [it, isNew] = myNumbers.try_emplace(appearance.Impl(), myAppearances.size());
        return isNew ? Append(appearance) : it->second;
    }
    /// A group of its own, whatever it looks like.
    std::size_t Append(const ModelData_Appearance& appearance)
    {
        myAppearances.push_back(appearance);
        return myAppearances.size() - 1;
    }

    const std::vector<ModelData_Appearance>& All() const { return myAppearances; }

private:
    std::unordered_map<const void*, std::size_t> myNumbers;
    std::vector<ModelData_Appearance> myAppearances;
};

ModelData_IndexedTriangleSet MakeSet(TriangleTables&& tables, const ModelData_Appearance& appearance,
                                     const Base_UTF16String& name)
{
    auto* data = new internal::TriangleSetImpl;
    auto set = internal::MakeHandle<ModelData_IndexedTriangleSet>(data);
    const std::size_t corners = tables.pointIndices.size();
    data->points = std::move(tables.points);
    data->indices = std::move(tables.pointIndices);
    data->normals.values = std::move(tables.normals);
    data->normals.indices = std::move(tables.normalIndices);
    data->normals.index = data->normals.indices.data();
    data->normals.corners = corners;
    data->normals.offered = corners / 3;
    data->offered = corners / 3;
    data->appearance = appearance;
    data->name = name;
    return set;
}

void AddTriangleSets(std::vector<TriangleTables>&& tables,
                     const std::vector<ModelData_Appearance>& appearances, const Base_UTF16String& name,
                     ModelData_PolyRepresentation& result)
{
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (!tables[i].pointIndices.empty()) {
            result.Add(MakeSet(std::move(tables[i]), appearances[i], name));
        }
    }
}

void AddFaces(const OcctBRep& brep, bool mergeFaceSets, const Base_UTF16String& name,
              ModelData_PolyRepresentation& result)
{
    AppearanceGroups groups(brep.appearance);
    std::vector<GroupedFace> faces;
    for (TopExp_Explorer it(brep.shape, TopAbs_FACE); it.More(); it.Next()) {
        const ModelData_Appearance& appearance = brep.AppearanceOf(it.Current());
        faces.push_back({TopoDS::Face(it.Current()),
                         mergeFaceSets ? groups.NumberOf(appearance) : groups.Append(appearance)});
    }
    AddTriangleSets(ExtractTriangles(faces, groups.All().size()), groups.All(), name, result);
}

// A host that draws the polylines of one set as if all began at its first point shows a single one right, so
// each chain gets a set of its own.
void AddPolylines(std::vector<std::vector<Polyline>> curves,
                  const std::vector<ModelData_Appearance>& appearances, const Base_UTF16String& name,
                  ModelData_PolyRepresentation& result)
{
    for (std::size_t group = 0; group < curves.size(); ++group) {
        for (const Polyline& line : JoinCurves(std::move(curves[group]), CurveTolerance)) {
            ModelData_PolyLineSet set{initialized()};
            set.AddPolyLine(line.data(), line.size());
            set.SetAppearance(appearances[group]);
            set.SetName(name);
            result.Add(set);
        }
    }
}

void AddLooseCurves(const OcctBRep& brep, const MeshTolerances& tolerances, const Base_UTF16String& name,
                    ModelData_PolyRepresentation& result)
{
    AppearanceGroups groups(brep.appearance);
    std::vector<std::vector<Polyline>> curves(1);
    TopTools_MapOfShape seen;
    double size = -1;
    for (TopExp_Explorer it(brep.shape, TopAbs_EDGE, TopAbs_FACE); it.More(); it.Next()) {
        if (!seen.Add(it.Current())) {
            continue;
        }
        size = size < 0 ? ShapeSize(brep.shape) : size;
        const std::size_t group = groups.NumberOf(brep.AppearanceOf(it.Current()));
        curves.resize(groups.All().size());
        curves[group].push_back(DiscretiseEdge(TopoDS::Edge(it.Current()), tolerances, size));
    }
    AddPolylines(std::move(curves), groups.All(), name, result);
}

ModelData_PolyRepresentation NullIfEmpty(const ModelData_PolyRepresentation& result)
{
    return result.Get().Size() == 0 ? ModelData_PolyRepresentation() : result;
}

} // namespace

ModelData_PolyRepresentation MeshShape(const OcctBRep& brep, const MeshTolerances& tolerances,
                                       bool mergeFaceSets, const Base_UTF16String& name)
{
    ModelData_PolyRepresentation result{initialized()};
    MeshFaces(brep.shape, tolerances);
    AddFaces(brep, mergeFaceSets, name, result);
    ForgetTriangulations(brep.shape);
    AddLooseCurves(brep, tolerances, name, result);
    return NullIfEmpty(result);
}

ModelData_PolyRepresentation MeshFacets(const FacetedBRep& brep, const Base_UTF16String& name)
{
    ModelData_PolyRepresentation result{initialized()};
    std::vector<TriangleTables> tables;
    std::vector<ModelData_Appearance> appearances;
    for (const FacetGroup& group : brep.groups) {
        tables.push_back(FacetTables(group.points, group.indices));
        appearances.push_back(group.appearance);
    }
    AddTriangleSets(std::move(tables), appearances, name, result);
    AppearanceGroups groups{ModelData_Appearance()};
    std::vector<std::vector<Polyline>> curves(1);
    for (const FacetCurve& curve : brep.curves) {
        const std::size_t group = groups.NumberOf(curve.appearance);
        curves.resize(groups.All().size());
        curves[group].push_back(curve.points);
    }
    AddPolylines(std::move(curves), groups.All(), name, result);
    return NullIfEmpty(result);
}

} // namespace cadex::occt
