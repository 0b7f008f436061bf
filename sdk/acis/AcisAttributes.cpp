#include "sdk/acis/AcisAttributes.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <vector>

#include "sdk/text/PlainText.h"

namespace cadex::acis {

namespace {

bool IsName(std::string key)
{
    std::transform(key.begin(), key.end(), key.begin(),
                   [](unsigned char c) { return static_cast<char>(c < 0x80 ? std::tolower(c) : c); });
    return key.size() >= 4 && key.compare(key.size() - 4, 4, "name") == 0;
}

} // namespace

AttributeTable::AttributeTable(const Records& records) : myRecords(records)
{
    for (std::size_t i = 0; i < records.Size(); ++i) {
        if (records.Base(i) == "attrib") {
            Add(i);
        }
    }
}

ModelData_Appearance AttributeTable::LookOf(int owner)
{
    const auto found = myColours.find(owner);
    return found == myColours.end() ? ModelData_Appearance() : myLooks.Of(found->second);
}

void AttributeTable::Describe(int owner, FileBody& body) const
{
    const auto range = myTexts.equal_range(owner);
    std::vector<std::pair<std::size_t, std::pair<Base_UTF16String, Base_UTF16String>>> found;
    for (auto text = range.first; text != range.second; ++text) {
        found.push_back(text->second);
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (auto& [record, entry] : found) {
        if (body.name.IsEmpty() && IsName(entry.first.ToUTF8())) {
            body.name = entry.second;
        } else {
            body.properties.push_back(std::move(entry));
        }
    }
}

void AttributeTable::Add(std::size_t record)
{
    Fields fields = myRecords.All(record);
    fields.Skip(1);
    while (fields.IsNumber()) {
        fields.Skip(1);
    }
    fields.Skip(2); // the attributes before and behind
    const int owner = fields.Pointer();
    if (owner == None) {
        return;
    }
    const std::string_view kind = myRecords.Kind(record);
    if (kind == "rgb_color" && fields.Left() >= 3) {
        fields.Skip(fields.Left() - 3);
        const auto red = static_cast<float>(fields.Number());
        const auto green = static_cast<float>(fields.Number());
        AddColour(owner, red, green, static_cast<float>(fields.Number()));
    } else if (kind == "truecolor" && !fields.AtEnd()) {
        fields.Skip(fields.Left() - 1);
        const double value = fields.Number();
        if (std::abs(value) < 1e10) {
            const auto bits = static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
            const auto part = [&](int shift) { return static_cast<float>(bits >> shift & 255) / 255.F; };
            AddColour(owner, part(16), part(8), part(0));
        }
    } else if (myRecords.Type(record).find("name_attrib-gen-attrib") != std::string_view::npos) {
        AddText(record, owner, fields);
    }
}

void AttributeTable::AddColour(int owner, float red, float green, float blue)
{
    if (red >= 0 && red <= 1 && green >= 0 && green <= 1 && blue >= 0 && blue <= 1) {
        myColours[owner] = internal::Colour{red, green, blue, 1};
    }
}

/// A key and a value end the record, behind switches.
void AttributeTable::AddText(std::size_t record, int owner, const Fields& fields)
{
    std::size_t last = fields.Position() + fields.Left();
    const std::string_view value = LastText(fields.Position(), last);
    const std::string_view key = LastText(fields.Position(), last);
    if (!key.empty()) {
        myTexts.emplace(owner, std::pair(record, std::pair(text::DecodePlainString(key),
                                                           text::DecodePlainString(value))));
    }
}

/// The text that ends in front of the field `last`, which becomes its own beginning; empty when there is
/// none. Before version 7 the length of a text is a field of its own, and its words are fields.
std::string_view AttributeTable::LastText(std::size_t first, std::size_t& last) const
{
    if (last > first && myRecords.IsString(last - 1)) {
        return myRecords.Field(--last);
    }
    if (last < first + 2 || myRecords.Head().version >= 700) {
        return {};
    }
    const char* end = myRecords.Field(last - 1).data() + myRecords.Field(last - 1).size();
    for (std::size_t i = last - 1; i > first; --i) {
        const char* begin = myRecords.Field(i).data();
        const std::string_view text(begin, static_cast<std::size_t>(end - begin));
        if (myRecords.Field(i - 1) == std::to_string(text.size())) {
            last = i - 1;
            return text;
        }
    }
    return {};
}

} // namespace cadex::acis
