#include "sdk/occt/OcctBRep.h"

#include <vector>

#include <TopExp_Explorer.hxx>
#include <TopTools_MapOfShape.hxx>
#include <TopoDS.hxx>

#include "sdk/occt/CurvePolylines.h"
#include "sdk/occt/MeshExtraction.h"
#include "sdk/occt/PolySets.h"

namespace cadex::occt {

namespace {

void AddFaces(const OcctBRep& brep, bool mergeFaceSets, const Base_UTF16String& name,
              ModelData_PolyRepresentation& result)
{
    SetLabels groups(brep.appearance);
    std::vector<GroupedFace> faces;
    for (TopExp_Explorer it(brep.shape, TopAbs_FACE); it.More(); it.Next()) {
        const ModelData_Appearance& appearance = brep.AppearanceOf(it.Current());
        faces.push_back({TopoDS::Face(it.Current()),
                         mergeFaceSets ? groups.NumberOf(appearance) : groups.Append(appearance)});
    }
    AddTriangleSets(ExtractTriangles(faces, groups.All().size()), groups.All(), name, result);
}

void AddLooseCurves(const OcctBRep& brep, const MeshTolerances& tolerances, const Base_UTF16String& name,
                    ModelData_PolyRepresentation& result)
{
    SetLabels groups(brep.appearance);
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
    AddPolylineSets(std::move(curves), groups.All(), name, result);
}

} // namespace

ModelData_PolyRepresentation OcctBRep::Mesh(const MeshTolerances& tolerances, bool mergeFaceSets,
                                            const Base_UTF16String& partName) const
{
    ModelData_PolyRepresentation result{initialized()};
    MeshFaces(shape, tolerances);
    AddFaces(*this, mergeFaceSets, partName, result);
    ForgetTriangulations(shape);
    AddLooseCurves(*this, tolerances, partName, result);
    return NullIfEmpty(result);
}

} // namespace cadex::occt
