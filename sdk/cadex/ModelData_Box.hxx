// Axis-aligned box.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_Point.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Box
{
public:
    ModelData_Box(); ///< empty: its smallest corner lies above its largest
    ModelData_Box(const ModelData_Pointd& theCorner1, const ModelData_Pointd& theCorner2);

    bool IsEmpty() const { return myMin.X() > myMax.X(); }
    const ModelData_Point& MinCorner() const { return myMin; }
    const ModelData_Point& MaxCorner() const { return myMax; }
    void Add(const ModelData_Point& thePoint);

private:
    ModelData_Point myMin;
    ModelData_Point myMax;
};

} // namespace cadex
