// Phong material: four colours and a shininess. The alpha of the diffuse colour is the opacity.
#pragma once

#include <cadex/Base_Export.hxx>
#include <cadex/ModelData_Color.hxx>

namespace cadex {

class CADEX_EXPORT ModelData_Material
{
public:
    /// The usual defaults: ambient 0.2, diffuse 0.8, specular and emission black, shininess 0.
    ModelData_Material() = default;
    ModelData_Material(const ModelData_Color& theAmbientColor, const ModelData_Color& theDiffuseColor,
                       const ModelData_Color& theSpecularColor, const ModelData_Color& theEmissionColor,
                       float theShininess)
        : myAmbient(theAmbientColor),
          myDiffuse(theDiffuseColor),
          mySpecular(theSpecularColor),
          myEmission(theEmissionColor),
          myShininess(theShininess)
    {
    }
    ModelData_Material(const ModelData_Color& theDiffuseColor) : myDiffuse(theDiffuseColor) {}

    const ModelData_Color& AmbientColor() const { return myAmbient; }
    ModelData_Color& AmbientColor() { return myAmbient; }
    const ModelData_Color& DiffuseColor() const { return myDiffuse; }
    ModelData_Color& DiffuseColor() { return myDiffuse; }
    const ModelData_Color& SpecularColor() const { return mySpecular; }
    ModelData_Color& SpecularColor() { return mySpecular; }
    const ModelData_Color& EmissionColor() const { return myEmission; }
    ModelData_Color& EmissionColor() { return myEmission; }
    /// 0..128.
    float Shininess() const { return myShininess; }
    float& Shininess() { return myShininess; }

    friend bool operator==(const ModelData_Material&, const ModelData_Material&) = default;

private:
    ModelData_Color myAmbient{0.2f, 0.2f, 0.2f};
    ModelData_Color myDiffuse{0.8f, 0.8f, 0.8f};
    ModelData_Color mySpecular{0.f, 0.f, 0.f};
    ModelData_Color myEmission{0.f, 0.f, 0.f};
    float myShininess = 0.f;
};

} // namespace cadex
