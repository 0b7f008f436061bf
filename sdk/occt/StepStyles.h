// Colours of a STEP file: which item of geometry, product or occurrence looks how.
#pragma once

#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/occt/AppearanceCache.h"
#include "sdk/occt/StepStructure.h"
#include "sdk/occt/StepText.h"

namespace cadex {
namespace occt {

/// Appearances that a styled item gives; either may be null.
struct StepStyle
{
    ModelData_Appearance surface;
    ModelData_Appearance curve;
};

/// NOTE: ISO 10303-46. Surface styles give the colour of faces (fill area, else rendering) with the
/// transparency of a rendering as alpha; curve styles that of curves. An overriding style beats the one that
/// it overrides; one that overrides in the context of an occurrence belongs to the occurrence.
class StepStyles
{
public:
    void Read(const StepText& text, const StepStructure& structure, AppearanceCache& cache);

    /// By the id of a representation item (solid, shell, face, curve, mapped item ...).
    std::unordered_map<StepId, StepStyle> items;
    /// By the number of the product: styles of its shape representations as a whole.
    std::unordered_map<std::size_t, StepStyle> products;
    /// By the number of the instance.
    std::unordered_map<std::size_t, StepStyle> instances;

private:
    struct Colours
    {
        std::optional<Colour> surface;
        std::optional<Colour> curve;
        std::optional<float> transparency;
    };

    void ReadItem(const StepText& text, const StepStructure& structure, const StepText::Record& record,
                  AppearanceCache& cache);
    void Collect(const StepText& text, StepId id, int depth, Colours& colours) const;
    bool InstanceOfContext(const StepText& text, const StepStructure& structure, StepId context,
                           std::size_t& number) const;
};

} // namespace occt
} // namespace cadex
