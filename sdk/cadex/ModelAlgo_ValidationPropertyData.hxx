// Result of ModelAlgo_ValidationProperty: millimetres, square and cubic millimetres.
#pragma once

#include <cadex/ModelData_Point.hxx>

namespace cadex {

class ModelAlgo_ValidationPropertyData
{
public:
    ModelAlgo_ValidationPropertyData() = default; ///< zeros

    double Volume() const { return myVolume; }
    double& Volume() { return myVolume; }
    double SurfaceArea() const { return mySurfaceArea; }
    double& SurfaceArea() { return mySurfaceArea; }
    const ModelData_Point& Centroid() const { return myCentroid; }
    ModelData_Point& Centroid() { return myCentroid; }

private:
    double myVolume = 0;
    double mySurfaceArea = 0;
    ModelData_Point myCentroid;
};

} // namespace cadex
