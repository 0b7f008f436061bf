// Result of ModelAlgo_ValidationProperty: millimetres, square and cubic millimetres.
#pragma once

#include <cadex/Base_Export.hxx>

#include <functional>
#include <utility>

#include <cadex/ModelData_Point.hxx>

namespace cadex {

class CADEX_EXPORT ModelAlgo_ValidationPropertyData
{
public:
    ModelAlgo_ValidationPropertyData() = default; ///< zeros

    double Volume() const { return myVolume; }
    double& Volume() { return myVolume; }
    /// Integrated when first read, since it costs as much as the volume and few want it: the shape must not
    /// change before.
    double SurfaceArea() const
    {
        Integrate();
        return mySurfaceArea;
    }
    double& SurfaceArea()
    {
        Integrate();
        return mySurfaceArea;
    }
    const ModelData_Point& Centroid() const { return myCentroid; }
    ModelData_Point& Centroid() { return myCentroid; }

    /// For engines: how the surface area is found when somebody asks for it.
    void SetLazySurfaceArea(std::function<double()> integral) { myIntegral = std::move(integral); }

private:
    void Integrate() const
    {
        if (const std::function<double()> integral = std::exchange(myIntegral, nullptr)) {
            mySurfaceArea = integral();
        }
    }

    double myVolume = 0;
    mutable double mySurfaceArea = 0;
    mutable std::function<double()> myIntegral;
    ModelData_Point myCentroid;
};

} // namespace cadex
