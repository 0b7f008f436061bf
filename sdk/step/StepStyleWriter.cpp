#include "sdk/step/StepStyleWriter.h"

#include <algorithm>
#include <cmath>

namespace cadex::step {

using part21::Raw;
using part21::TypedReal;

void StepStyleWriter::Apply(const ModelData_Appearance& appearance, Kind kind, Ref item)
{
    ModelData_Color color;
    if (!appearance.ToColor(color)) {
        return;
    }
    Rgba rgba;
    for (std::size_t i = 0; i < 4; ++i) {
        rgba[i] = std::isfinite(color[i]) ? std::clamp(color[i], 0.f, 1.f) : (i == 3 ? 1.f : 0.f);
    }
    Ref& style = (kind == Kind::Surface ? mySurfaceStyles : myCurveStyles)[rgba];
    if (!style) {
        style = kind == Kind::Surface ? SurfaceStyle(rgba) : CurveStyle(rgba);
    }
    myStyled.push_back(myOut.Add("STYLED_ITEM", "color", std::array{style}, item));
}

void StepStyleWriter::EndRepresentation(Ref context)
{
    if (!myStyled.empty()) {
        myOut.Add("MECHANICAL_DESIGN_GEOMETRIC_PRESENTATION_REPRESENTATION", "", myStyled, context);
        myStyled.clear();
    }
}

Ref StepStyleWriter::SurfaceStyle(const Rgba& color)
{
    const Ref rgb = myOut.Add("COLOUR_RGB", "", color[0], color[1], color[2]);
    const Ref fillColor = myOut.Add("FILL_AREA_STYLE_COLOUR", "", rgb);
    const Ref fill = myOut.Add("FILL_AREA_STYLE", "", std::array{fillColor});
    std::vector<Ref> side{myOut.Add("SURFACE_STYLE_FILL_AREA", fill)};
    if (color[3] < 1) {
        const Ref transparency = myOut.Add("SURFACE_STYLE_TRANSPARENT", 1 - color[3]);
        side.push_back(myOut.Add("SURFACE_STYLE_RENDERING_WITH_PROPERTIES", Raw{".NORMAL_SHADING."}, rgb,
                                 std::array{transparency}));
    }
    const Ref sideStyle = myOut.Add("SURFACE_SIDE_STYLE", "", side);
    const Ref usage = myOut.Add("SURFACE_STYLE_USAGE", Raw{".BOTH."}, sideStyle);
    return myOut.Add("PRESENTATION_STYLE_ASSIGNMENT", std::array{usage});
}

Ref StepStyleWriter::CurveStyle(const Rgba& color)
{
    const Ref rgb = myOut.Add("COLOUR_RGB", "", color[0], color[1], color[2]);
    const Ref font = myOut.Add("DRAUGHTING_PRE_DEFINED_CURVE_FONT", "continuous");
    const Ref curve = myOut.Add("CURVE_STYLE", "", font, TypedReal{"POSITIVE_LENGTH_MEASURE", 0.1}, rgb);
    return myOut.Add("PRESENTATION_STYLE_ASSIGNMENT", std::array{curve});
}

} // namespace cadex::step
