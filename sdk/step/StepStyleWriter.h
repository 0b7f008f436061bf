// Colours of a STEP file: one presentation style for each colour, however many items wear it.
#pragma once

#include <array>
#include <map>
#include <vector>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/part21/Part21Writer.h"

namespace cadex::step {

using part21::Part21Writer;
using part21::Ref;

class StepStyleWriter
{
public:
    enum class Kind
    {
        Surface,
        Curve
    };

    explicit StepStyleWriter(Part21Writer& out) : myOut(out) {}

    /// Styles a representation item; an appearance without a colour leaves it as it is.
    void Apply(const ModelData_Appearance& appearance, Kind kind, Ref item);
    /// Lists what has been styled since the last call in a presentation of the given context.
    void EndRepresentation(Ref context);

private:
    using Rgba = std::array<float, 4>;

    Ref SurfaceStyle(const Rgba& color);
    Ref CurveStyle(const Rgba& color);

    Part21Writer& myOut;
    std::map<Rgba, Ref> mySurfaceStyles;
    std::map<Rgba, Ref> myCurveStyles;
    std::vector<Ref> myStyled;
};

} // namespace cadex::step
