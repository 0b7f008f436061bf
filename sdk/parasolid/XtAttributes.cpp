#include "sdk/parasolid/XtAttributes.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "sdk/text/PlainText.h"
#include "sdk/text/Utf.h"

namespace cadex::parasolid {

namespace {

std::string CharactersOf(std::span<const double> codes)
{
    std::string text;
    for (const double code : codes) {
        if (code >= 1 && code <= 255) {
            text.push_back(static_cast<char>(static_cast<unsigned char>(code)));
        }
    }
    return text;
}

Base_UTF16String UnicodeOf(std::span<const double> codes)
{
    std::u16string text;
    for (const double code : codes) {
        if (code >= 1 && code <= 0xFFFF) {
            text.push_back(static_cast<char16_t>(code));
        }
    }
    return text::ToSdkString(text);
}

/// A whole number without a point.
std::string NumberText(double value)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(12);
    text << value;
    return text.str();
}

/// The node with the values of one field of an attribute.
Node ValuesOf(const Nodes& nodes, const Node& attribute, std::size_t field)
{
    const std::span<const double> fields = attribute.All(Field::Fields);
    return field < fields.size() ? nodes.At(attribute.Pointer(Field::Fields, static_cast<int>(field)))
                                 : Node();
}

bool IsFraction(double value)
{
    return value >= 0 && value <= 1;
}

} // namespace

AttributeTable::AttributeTable(const Nodes& nodes)
{
    std::unordered_map<int, std::string> kinds; // by definition
    for (std::size_t i = 0; i < nodes.Size(); ++i) {
        const Node attribute = nodes[i];
        if (attribute.Type() != type::Attribute) {
            continue;
        }
        const int definition = attribute.Pointer(Field::Definition);
        const auto [kind, isNew] = kinds.try_emplace(definition);
        if (isNew) {
            const Node name = nodes.At(nodes.At(definition).Pointer(Field::Identifier));
            kind->second = CharactersOf(name.All(Field::String));
        }
        Add(nodes, attribute, kind->second);
    }
}

void AttributeTable::Add(const Nodes& nodes, const Node& attribute, const std::string& kind)
{
    const int owner = attribute.Pointer(Field::Owner);
    const Node node = ValuesOf(nodes, attribute, 0);
    const std::span<const double> values = node.All(Field::Values);
    if (owner == 0 || values.empty()) {
        return;
    }
    if (kind == "SDL/TYSA_COLOUR" || kind == "SDL/TYSA_COLOUR_2") {
        if (values.size() >= 3 && std::all_of(values.begin(), values.begin() + 3, IsFraction)) {
            myEntries[owner].colour =
                internal::Colour{static_cast<float>(values[0]), static_cast<float>(values[1]),
                                 static_cast<float>(values[2]), 1};
        }
    } else if (kind == "SDL/TYSA_TRANSLUCENCY") {
        const double value = node.Type() == type::Integers ? values[0] / 100 : values[0];
        myEntries[owner].translucency = IsFraction(value) ? value : 0;
    } else if (kind == "SDL/TYSA_INVISIBLE") {
        myEntries[owner].isInvisible = values[0] != 0;
    } else if (kind == "SDL/TYSA_UNAME" && node.Type() == type::Unicode) {
        Entry& entry = myEntries[owner];
        entry.name = UnicodeOf(values);
        entry.hasUnicodeName = !entry.name.IsEmpty();
    } else if (kind == "SDL/TYSA_NAME" && node.Type() == type::Characters) {
        Entry& entry = myEntries[owner];
        if (!entry.hasUnicodeName) {
            entry.name = text::DecodePlainString(CharactersOf(values));
        }
    } else if (kind == "SDL/TYSA_LAYER" || kind == "SDL/TYSA_DENSITY") {
        const char* key = kind == "SDL/TYSA_LAYER" ? "Layer" : "Density";
        myEntries[owner].properties.emplace_back(key, NumberText(values[0]).c_str());
    } else if (!kind.starts_with("SDL/") &&
               (node.Type() == type::Characters || node.Type() == type::Unicode)) {
        Base_UTF16String text =
            node.Type() == type::Unicode ? UnicodeOf(values) : text::DecodePlainString(CharactersOf(values));
        if (!text.IsEmpty()) {
            myEntries[owner].properties.emplace_back(text::DecodePlainString(kind), std::move(text));
        }
    }
}

ModelData_Appearance AttributeTable::LookOf(int node)
{
    const auto found = myEntries.find(node);
    if (found == myEntries.end() || (!found->second.colour && found->second.translucency == 0)) {
        return {};
    }
    internal::Colour colour = found->second.colour.value_or(internal::Colour{0.8F, 0.8F, 0.8F, 1});
    colour.alpha = static_cast<float>(1 - found->second.translucency);
    return myLooks.Of(colour);
}

Base_UTF16String AttributeTable::NameOf(int node) const
{
    const auto found = myEntries.find(node);
    return found == myEntries.end() ? Base_UTF16String() : found->second.name;
}

std::vector<std::pair<Base_UTF16String, Base_UTF16String>> AttributeTable::PropertiesOf(int node) const
{
    const auto found = myEntries.find(node);
    return found == myEntries.end() ? std::vector<std::pair<Base_UTF16String, Base_UTF16String>>()
                                    : found->second.properties;
}

bool AttributeTable::IsInvisible(int node) const
{
    const auto found = myEntries.find(node);
    return found != myEntries.end() && found->second.isInvisible;
}

} // namespace cadex::parasolid
