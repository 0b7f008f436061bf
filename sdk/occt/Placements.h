// Placements of the kernel as placements of the model.
#pragma once

#include <gp_Trsf.hxx>

#include <cadex/ModelData_Transformation.hxx>

namespace cadex::occt {

/// The whole matrix goes into the rotation part, so that mirrors and scales are kept; the factor stays 1.
inline ModelData_Transformation ToTransformation(const gp_Trsf& placement)
{
    ModelData_Transformation result;
    result.SetRotationPart(placement.Value(1, 1), placement.Value(1, 2), placement.Value(1, 3),
                           placement.Value(2, 1), placement.Value(2, 2), placement.Value(2, 3),
                           placement.Value(3, 1), placement.Value(3, 2), placement.Value(3, 3));
    result.SetTranslationPart(placement.Value(1, 4), placement.Value(2, 4), placement.Value(3, 4));
    return result;
}

} // namespace cadex::occt
