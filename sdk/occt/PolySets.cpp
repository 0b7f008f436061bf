#include "sdk/occt/PolySets.h"

#include <utility>

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>

#include "sdk/mesh/EngineTolerances.h"

namespace cadex::occt {

namespace {

const Base_UTF16String& NameOr(const SetLabel& label, const Base_UTF16String& partName)
{
    return label.name.IsEmpty() ? partName : label.name;
}

ModelData_IndexedTriangleSet MakeSet(mesh::TriangleTables&& tables, const ModelData_Appearance& appearance,
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

} // namespace

void AddTriangleSets(std::vector<mesh::TriangleTables>&& tables, const std::vector<SetLabel>& labels,
                     const Base_UTF16String& partName, ModelData_PolyRepresentation& result)
{
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (!tables[i].pointIndices.empty()) {
            result.Add(MakeSet(std::move(tables[i]), labels[i].appearance, NameOr(labels[i], partName)));
        }
    }
}

// A host that draws the polylines of one set as if all began at its first point shows a single one right, so
// each chain gets a set of its own.
void AddPolylineSets(std::vector<std::vector<Polyline>> curves, const std::vector<SetLabel>& labels,
                     const Base_UTF16String& partName, ModelData_PolyRepresentation& result)
{
    for (std::size_t group = 0; group < curves.size(); ++group) {
        for (const Polyline& line : JoinCurves(std::move(curves[group]), tolerance::JoinedCurves)) {
            ModelData_PolyLineSet set{initialized()};
            set.AddPolyLine(line.data(), line.size());
            set.SetAppearance(labels[group].appearance);
            set.SetName(NameOr(labels[group], partName));
            result.Add(set);
        }
    }
}

ModelData_PolyRepresentation NullIfEmpty(const ModelData_PolyRepresentation& representation)
{
    return representation.Get().Size() == 0 ? ModelData_PolyRepresentation() : representation;
}

} // namespace cadex::occt
