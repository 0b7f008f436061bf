// Selects representations of a part by kind and level of detail.
#pragma once

namespace cadex {

enum ModelData_RepresentationMask
{
    ModelData_RM_BRep = 0x01,
    ModelData_RM_CoarseLOD = 0x10,
    ModelData_RM_MediumLOD = 0x20,
    ModelData_RM_FineLOD = 0x40,
    ModelData_RM_Poly = 0x70, ///< any level of detail
    ModelData_RM_Any = 0x71
};

} // namespace cadex
