#include "sdk/step/StepStyles.h"

#include <algorithm>
#include <string_view>

namespace cadex::step {

namespace {

// Styles nest about six deep; what goes deeper runs in a circle.
constexpr int MaximalNesting = 12;

struct NamedColour
{
    std::string_view name;
    Colour colour;
};

// NOTE: ISO 10303-46, draughting_pre_defined_colour.
constexpr NamedColour PredefinedColours[] = {
    {"red", {1, 0, 0, 1}},     {"green", {0, 1, 0, 1}}, {"blue", {0, 0, 1, 1}},  {"yellow", {1, 1, 0, 1}},
    {"magenta", {1, 0, 1, 1}}, {"cyan", {0, 1, 1, 1}},  {"black", {0, 0, 0, 1}}, {"white", {1, 1, 1, 1}},
};

float Component(double value)
{
    return value >= 0.0 ? static_cast<float>(std::min(value, 1.0)) : 0.0F;
}

std::optional<Colour> ReadColour(const ClearText& text, RecordId id)
{
    bool found = false;
    if (Cursor rgb = text.Arguments(id, "COLOUR_RGB", found); found) {
        // A complex instance has the name elsewhere: the numbers are then all there is.
        if (rgb.Next() == Cursor::Kind::String || rgb.Next() == Cursor::Kind::Omitted) {
            rgb.Skip();
        }
        Colour colour;
        colour.red = Component(rgb.Real());
        colour.green = Component(rgb.Real());
        colour.blue = Component(rgb.Real());
        return rgb.Failed() ? std::nullopt : std::optional(colour);
    }
    for (const std::string_view type : {"DRAUGHTING_PRE_DEFINED_COLOUR", "PRE_DEFINED_COLOUR"}) {
        if (Cursor named = text.Arguments(id, type, found); found) {
            const std::string_view name = named.String();
            for (const NamedColour& known : PredefinedColours) {
                if (known.name == name) {
                    return known.colour;
                }
            }
        }
    }
    return std::nullopt;
}

} // namespace

void StepStyles::Read(const ClearText& text, const StepStructure& structure, AppearanceCache& cache)
{
    // Later ones replace earlier ones: what overrides comes after what is overridden.
    for (const std::string_view type :
         {"STYLED_ITEM", "OVER_RIDING_STYLED_ITEM", "CONTEXT_DEPENDENT_OVER_RIDING_STYLED_ITEM"}) {
        for (const ClearText::Record& record : text.OfType(type)) {
            ReadItem(text, structure, record, cache);
        }
    }
}

void StepStyles::ReadItem(const ClearText& text, const StepStructure& structure,
                          const ClearText::Record& record, AppearanceCache& cache)
{
    Cursor arguments = text.Arguments(record);
    arguments.Skip();
    const std::vector<RecordId> assignments = arguments.References();
    const RecordId item = arguments.Reference();
    Colours colours;
    std::size_t instance = 0;
    bool ofInstance = false;
    for (const RecordId assignment : assignments) {
        Collect(text, assignment, 0, colours);
        bool inContext = false;
        Cursor context = text.Arguments(assignment, "PRESENTATION_STYLE_BY_CONTEXT", inContext);
        if (inContext) {
            context.Skip();
            ofInstance = InstanceOfContext(text, structure, context.Reference(), instance) || ofInstance;
        }
    }
    if (text.Is(record, "CONTEXT_DEPENDENT_OVER_RIDING_STYLED_ITEM")) {
        arguments.Skip();
        const std::vector<RecordId> contexts = arguments.References();
        for (const RecordId context : contexts) {
            ofInstance = InstanceOfContext(text, structure, context, instance) || ofInstance;
        }
    }
    if (colours.surface && colours.transparency) {
        colours.surface->alpha = Component(1.0 - static_cast<double>(*colours.transparency));
    }
    const StepStyle style{cache.Of(colours.surface), cache.Of(colours.curve)};
    if (style.surface.IsNull() && style.curve.IsNull()) {
        return;
    }
    std::size_t product = 0;
    if (ofInstance || structure.FindInstance(item, instance)) {
        instances[instance] = style;
    } else if (structure.ProductOfRepresentation(item, product) || structure.FindProduct(item, product)) {
        products[product] = style;
    } else {
        items[item] = style;
    }
}

void StepStyles::Collect(const ClearText& text, RecordId id, int depth, Colours& colours) const
{
    const ClearText::Record* record = text.Find(id);
    if (record == nullptr || depth > MaximalNesting) {
        return;
    }
    const std::string_view type = text.TypeName(*record);
    Cursor arguments = text.Arguments(*record);
    const auto collectList = [&] {
        const std::vector<RecordId> ids = arguments.References();
        for (const RecordId next : ids) {
            Collect(text, next, depth + 1, colours);
        }
    };
    if (type == "PRESENTATION_STYLE_ASSIGNMENT" || type == "PRESENTATION_STYLE_BY_CONTEXT") {
        collectList();
    } else if (type == "SURFACE_STYLE_USAGE") {
        arguments.Skip();
        Collect(text, arguments.Reference(), depth + 1, colours);
    } else if (type == "SURFACE_SIDE_STYLE" || type == "FILL_AREA_STYLE") {
        arguments.Skip();
        collectList();
    } else if (type == "SURFACE_STYLE_FILL_AREA") {
        Collect(text, arguments.Reference(), depth + 1, colours);
    } else if (type == "FILL_AREA_STYLE_COLOUR") {
        arguments.Skip();
        if (const std::optional<Colour> colour = ReadColour(text, arguments.Reference())) {
            colours.surface = colour;
        }
    } else if (type == "SURFACE_STYLE_RENDERING" || type == "SURFACE_STYLE_RENDERING_WITH_PROPERTIES") {
        arguments.Skip();
        const std::optional<Colour> colour = ReadColour(text, arguments.Reference());
        if (colour && !colours.surface) {
            colours.surface = colour;
        }
        if (type == "SURFACE_STYLE_RENDERING_WITH_PROPERTIES") {
            collectList();
        }
    } else if (type == "SURFACE_STYLE_TRANSPARENT") {
        colours.transparency = static_cast<float>(arguments.Real());
    } else if (type == "CURVE_STYLE") {
        arguments.Skip();
        arguments.Skip();
        arguments.Skip();
        if (const std::optional<Colour> colour = ReadColour(text, arguments.Reference())) {
            colours.curve = colour;
        }
    }
}

bool StepStyles::InstanceOfContext(const ClearText& text, const StepStructure& structure, RecordId context,
                                   std::size_t& number) const
{
    const auto representation = structure.instanceOfRepresentation.find(context);
    if (representation != structure.instanceOfRepresentation.end()) {
        number = representation->second;
        return true;
    }
    bool found = false;
    Cursor arguments = text.Arguments(context, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION", found);
    if (found) {
        arguments.Skip();
        return structure.FindInstance(structure.OwnerOf(text, arguments.Reference()), number);
    }
    return structure.FindInstance(structure.OwnerOf(text, context), number);
}

} // namespace cadex::step
