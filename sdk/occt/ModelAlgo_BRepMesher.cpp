#include <cadex/ModelAlgo_BRepMesher.hxx>

#include <cadex/ModelData_BRepRepresentation.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/internal/Progress.hxx>

#include "sdk/mesh/DistinctParts.h"
#include "sdk/occt/EngineBRep.h"
#include "sdk/occt/EngineScope.h"

namespace cadex {

namespace {

void MeshParts(std::vector<ModelData_Part> parts, const ModelAlgo_BRepMesherParameters& parameters,
               bool enforceAddition)
{
    const occt::MeshTolerances tolerances = occt::MakeTolerances(parameters);
    const internal::ProgressRange meshing(internal::ProgressStage::Meshing);
    for (std::size_t i = 0; i < parts.size() && internal::Progress::GoesOn(i, parts.size()); ++i) {
        const internal::ProgressRange step(i, parts.size());
        ModelData_Part& part = parts[i];
        if (!enforceAddition && !part.PolyRepresentation(ModelData_RM_Poly).IsNull()) {
            continue;
        }
        const ModelData_BRepRepresentation brep = part.BRepRepresentation();
        ModelData_PolyRepresentation mesh;
        // One part's failure costs that part alone.
        occt::RunGuarded(occt::EngineUse::Geometry, [&] {
            if (const auto* body = occt::BRepOf<occt::EngineBRep>(brep)) {
                mesh = body->Mesh(tolerances, parameters.MergeFaceSets(), part.Name());
            }
            return true;
        });
        if (!mesh.IsNull() && !internal::Progress::IsCancelled()) {
            part.AddRepresentation(mesh);
        }
    }
    internal::Progress::ReportCancel();
}

} // namespace

void ModelAlgo_BRepMesher::Compute(const ModelData_Model& theModel, bool theEnforceAddition) const
{
    MeshParts(mesh::DistinctParts(theModel), myParameters, theEnforceAddition);
}

void ModelAlgo_BRepMesher::Compute(const ModelData_SceneGraphElement& theElement,
                                   bool theEnforceAddition) const
{
    MeshParts(mesh::DistinctParts(theElement), myParameters, theEnforceAddition);
}

} // namespace cadex
