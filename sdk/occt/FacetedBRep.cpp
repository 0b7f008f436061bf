#include "sdk/occt/FacetedBRep.h"

#include <utility>

#include "sdk/occt/MeshToShape.h"
#include "sdk/occt/PolySets.h"

namespace cadex::occt {

namespace {

constexpr std::size_t MostShapeFacets = 1000;

std::size_t NumberOfFacets(const FacetedBRep& facets)
{
    std::size_t count = 0;
    for (const FacetGroup& group : facets.groups) {
        count += group.indices.size() / 3;
    }
    return count;
}

} // namespace

ModelData_PolyRepresentation FacetedBRep::Mesh(const MeshTolerances&, bool,
                                               const Base_UTF16String& partName) const
{
    ModelData_PolyRepresentation result{initialized()};
    std::vector<mesh::TriangleTables> tables;
    std::vector<SetLabel> labels;
    for (const FacetGroup& group : groups) {
        tables.push_back(group.normals.empty() ? mesh::FacetTables(group.points, group.indices)
                                               : mesh::TriangleTables{group.points, group.normals,
                                                                      group.indices, group.indices});
        labels.push_back({group.appearance, group.name});
    }
    AddTriangleSets(std::move(tables), labels, partName, result);
    SetLabels numbers{ModelData_Appearance()};
    std::vector<std::vector<Polyline>> lines(1);
    for (const FacetCurve& curve : curves) {
        const std::size_t group = numbers.NumberOf(curve.appearance);
        lines.resize(numbers.All().size());
        lines[group].push_back(curve.points);
    }
    AddPolylineSets(std::move(lines), numbers.All(), partName, result);
    return NullIfEmpty(result);
}

TopoDS_Shape FacetedBRep::KernelShape() const
{
    return NumberOfFacets(*this) <= MostShapeFacets ? MakeShape(*this) : TopoDS_Shape();
}

} // namespace cadex::occt
