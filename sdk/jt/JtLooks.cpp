#include "sdk/jt/JtLooks.h"

#include <algorithm>
#include <cmath>

namespace cadex::jt {

namespace {

constexpr float HighestShininess = 128;

float Clamped(float value, float highest = 1)
{
    return std::isfinite(value) ? std::clamp(value, 0.F, highest) : 0.F;
}

ModelData_Color ColourOf(const Material::Rgba& rgba, float alpha = 1)
{
    return {Clamped(rgba[0]), Clamped(rgba[1]), Clamped(rgba[2]), alpha};
}

ModelData_Appearance AppearanceOf(const Material& material)
{
    return {
        ModelData_Material(ColourOf(material.ambient),
                           ColourOf(material.diffuse, material.isBlended ? Clamped(material.diffuse[3]) : 1),
                           ColourOf(material.specular), ColourOf(material.emission),
                           Clamped(material.shininess, HighestShininess))};
}

} // namespace

ModelData_Appearance Looks::Of(const Node& node, const Scene& scene, const ModelData_Appearance& inherited)
{
    for (auto id = node.attributes.rbegin(); id != node.attributes.rend(); ++id) {
        const auto attribute = scene.attributes.find(*id);
        if (attribute != scene.attributes.end() && attribute->second.material &&
            !attribute->second.isIgnored) {
            return *myKnown.insert(AppearanceOf(*attribute->second.material)).first;
        }
    }
    return inherited;
}

} // namespace cadex::jt
