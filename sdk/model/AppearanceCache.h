// One appearance object for each distinct colour of a file, so that equal styles become one material in the
// host.
#pragma once

#include <map>
#include <optional>
#include <tuple>

#include <cadex/ModelData_Appearance.hxx>

namespace cadex {
namespace internal {

/// Components from 0 to 1, sRGB as the files give them; alpha 1 is opaque.
struct Colour
{
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 1;

    bool operator<(const Colour& other) const
    {
        return std::tie(red, green, blue, alpha) < std::tie(other.red, other.green, other.blue, other.alpha);
    }
};

class AppearanceCache
{
public:
    /// The appearance of the colour, made on first use; null without a colour.
    ModelData_Appearance Of(const std::optional<Colour>& colour)
    {
        if (!colour) {
            return {};
        }
        ModelData_Appearance& appearance = myAppearances[*colour];
        if (appearance.IsNull()) {
            appearance = ModelData_Appearance(
                ModelData_Color(colour->red, colour->green, colour->blue, colour->alpha));
        }
        return appearance;
    }

private:
    std::map<Colour, ModelData_Appearance> myAppearances;
};

} // namespace internal
} // namespace cadex
