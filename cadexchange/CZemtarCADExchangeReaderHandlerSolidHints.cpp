#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include "host/CZemtarMatrix.h"
#include "host/CZemtarSceneNode.h"
#include "host/CZemtarSolidHint.h"

#include <cadex/ModelAlgo_ValidationProperty.hxx>
#include <cadex/ModelAlgo_ValidationPropertyData.hxx>
#include <cadex/ModelData_ShapeConverter.hxx>

#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>
#include <Standard_Failure.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_Mat.hxx>

#include <vector>

namespace Zemtar {

namespace {

constexpr double CubicMillimetresToMetres = 1e-9;
constexpr double InertiaToMetres = 1e-15; ///< a length to the fifth power

CZemtarMatrix InertiaOf(const TopoDS_Shape& shape)
{
    GProp_GProps properties;
    BRepGProp::VolumeProperties(shape, properties, Standard_False, Standard_False, Standard_False);
    const gp_Mat inertia = properties.MatrixOfInertia();
    CZemtarMatrix matrix;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            // The fourth row and column are 0, the corner too: this is wanted.
            matrix.M(row, column) =
                row < 3 && column < 3 ? inertia.Value(row + 1, column + 1) * InertiaToMetres : 0.0;
        }
    }
    return matrix;
}

/// The inertia is taken of placed shapes alone, which is wanted. A shape that the kernel fails on has none.
void TakeInertia(const cadex::ModelData_SceneGraphElement& element, CZemtarSolidHint& hint)
{
    try {
        const TopoDS_Shape shape = cadex::ModelData_ShapeConverter::Convert(element);
        if (!shape.IsNull() && !shape.Location().IsIdentity()) {
            hint.SetInertiaMatrix(InertiaOf(shape));
        }
    } catch (const Standard_Failure&) {
        return;
    }
}

} // namespace

void CZemtarCADExchangeReaderHandler::ProcessSolidHints(CZemtarSceneNode* node,
                                                        cadex::ModelData_SceneGraphElement& element)
{
    cadex::ModelAlgo_ValidationPropertyData data;
    if (!cadex::ModelAlgo_ValidationProperty::ComputeValidationProperties(element, data)) {
        return;
    }
    CZemtarSolidHint hint;
    const double volume = data.Volume() * CubicMillimetresToMetres;
    hint.Attributes().SetVolume(volume);
    hint.Attributes().SetOriginalVolume(volume);
    const cadex::ModelData_Point& centroid = data.Centroid();
    hint.Attributes().CenterOfMass().SetXYZ(centroid.X(), centroid.Y(), centroid.Z());
    TakeInertia(element, hint);

    std::vector<CZemtarSceneNode*> children;
    node->Children(children, false);
    for (const CZemtarSceneNode* child : children) {
        hint.AppendChildID(child->ID());
    }
    node->SolidHintSet(hint);
}

} // namespace Zemtar
