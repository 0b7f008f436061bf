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
    const auto materialOf = [&](std::int32_t id) -> const Material* {
        const auto attribute = scene.attributes.find(id);
        const bool counts =
            attribute != scene.attributes.end() && attribute->second.material && !attribute->second.isIgnored;
        return counts ? &*attribute->second.material : nullptr;
    };
    const Material* last = nullptr;
    for (const std::int32_t id : node.attributes) {
        const Material* material = materialOf(id);
        last = material == nullptr ? last : material;
    }
    return last == nullptr ? inherited : *myKnown.insert(AppearanceOf(*last)).first;
}

} // namespace cadex::jt
