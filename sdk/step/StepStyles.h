// Colours of a STEP file: which item of geometry, product or occurrence looks how.
#pragma once

#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <cadex/ModelData_Appearance.hxx>

#include "sdk/model/AppearanceCache.h"
#include "sdk/step/StepStructure.h"
#include "sdk/step/StepText.h"

namespace cadex::step {

using internal::AppearanceCache;
using internal::Colour;

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
    void Read(const ClearText& text, const StepStructure& structure, AppearanceCache& cache);

    /// By the id of a representation item (solid, shell, face, curve, mapped item ...).
    std::unordered_map<RecordId, StepStyle> items;
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

    void ReadItem(const ClearText& text, const StepStructure& structure, const ClearText::Record& record,
                  AppearanceCache& cache);
    void Collect(const ClearText& text, RecordId id, int depth, Colours& colours) const;
    bool InstanceOfContext(const ClearText& text, const StepStructure& structure, RecordId context,
                           std::size_t& number) const;
};

} // namespace cadex::step
