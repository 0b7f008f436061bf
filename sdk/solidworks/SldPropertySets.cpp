#include "sdk/solidworks/SldPropertySets.h"

#include <cmath>
#include <map>
#include <string>

#include "sdk/solidworks/SldBytes.h"
#include "sdk/text/PlainText.h"

namespace cadex::solidworks {

namespace {

// NOTE: the layouts and numbers are those of [MS-OLEPS], "Object Linking and Embedding Property Set Data
// Structures".
constexpr std::string_view Summary("\xe0\x85\x9f\xf2\xf9\x4f\x68\x10\xab\x91\x08\x00\x2b\x27\xb3\xd9", 16);
constexpr std::string_view Users("\x05\xd5\xcd\xd5\x9c\x2e\x1b\x10\x93\x97\x08\x00\x2b\x2c\xf9\xae", 16);
constexpr std::uint32_t Dictionary = 0;
constexpr std::uint32_t CodePage = 1;
constexpr std::uint32_t Unicode = 1200;
constexpr std::size_t MostProperties = 10'000;

enum Type : std::uint32_t
{
    Int16 = 2,
    Int32 = 3,
    Real32 = 4,
    Real64 = 5,
    Boolean = 11,
    Text8 = 30,
    Text16 = 31,
    FileTime = 64
};

std::uint32_t U32(std::string_view bytes, std::size_t at)
{
    return ValueAt<std::uint32_t>(bytes, at);
}

/// A text up to its end or a zero.
Base_UTF16String TextAt(std::string_view bytes, std::size_t at, std::size_t size, bool isUnicode)
{
    if (!Has(bytes, at, size)) {
        return {};
    }
    if (isUnicode) {
        std::size_t units = 0;
        while (units < size / 2 && ValueAt<std::uint16_t>(bytes, at + 2 * units) != 0) {
            ++units;
        }
        return Utf16At(bytes, at, units);
    }
    const std::string_view text = bytes.substr(at, size);
    return text::DecodePlainString(text.substr(0, text.find('\0')));
}

void AddValue(const Base_UTF16String& name, std::string_view section, std::size_t at, bool isUnicode,
              ModelData_PropertyTable& table)
{
    const std::size_t value = at + 4;
    switch (U32(section, at)) {
    case Int16:
        table.Add(name, I32{ValueAt<std::int16_t>(section, value)});
        break;
    case Int32:
        table.Add(name, ValueAt<I32>(section, value));
        break;
    case Real32:
        table.Add(name, ValueAt<float>(section, value));
        break;
    case Real64:
        table.Add(name, ValueAt<double>(section, value));
        break;
    case Boolean:
        table.Add(name, Base_UTF16String(ValueAt<std::uint16_t>(section, value) != 0 ? "Yes" : "No"));
        break;
    case Text8:
    case Text16: {
        const bool isWide = U32(section, at) == Text16;
        const std::size_t size = std::size_t{U32(section, value)} * (isWide ? 2 : 1);
        const Base_UTF16String text = TextAt(section, value + 4, size, isWide || isUnicode);
        if (!text.IsEmpty()) {
            table.Add(name, text);
        }
        break;
    }
    case FileTime: { // tenths of a microsecond since 1601
        constexpr std::int64_t From1601To1970 = 11'644'473'600;
        const auto ticks = ValueAt<std::uint64_t>(section, value);
        if (ticks > 0) {
            table.Add(name, ModelData_PropertyTable::TimeType(static_cast<time_t>(
                                static_cast<std::int64_t>(ticks / 10'000'000) - From1601To1970)));
        }
        break;
    }
    default:
        break;
    }
}

std::map<std::uint32_t, Base_UTF16String> ReadDictionary(std::string_view section, std::size_t at,
                                                         bool isUnicode)
{
    std::map<std::uint32_t, Base_UTF16String> names;
    const std::size_t count = U32(section, at);
    at += 4;
    for (std::size_t i = 0; i < std::min(count, MostProperties) && Has(section, at, 8); ++i) {
        const std::uint32_t number = U32(section, at);
        std::size_t size = U32(section, at + 4);
        if (isUnicode) {
            size = (size * 2 + 3) / 4 * 4;
        }
        names[number] = TextAt(section, at + 8, size, isUnicode);
        at += 8 + size;
    }
    return names;
}

void AddSection(std::string_view section, std::map<std::uint32_t, Base_UTF16String> names, bool isUsers,
                ModelData_PropertyTable& table)
{
    const std::size_t count = std::min<std::size_t>(U32(section, 4), MostProperties);
    const auto placeOf = [&](std::size_t i) { return U32(section, 8 + 8 * i + 4); };
    bool isUnicode = false;
    for (std::size_t i = 0; i < count; ++i) {
        if (U32(section, 8 + 8 * i) == CodePage) {
            isUnicode = ValueAt<std::uint16_t>(section, placeOf(i) + 4) == Unicode;
        }
    }
    for (std::size_t i = 0; i < count && isUsers; ++i) {
        if (U32(section, 8 + 8 * i) == Dictionary) {
            names = ReadDictionary(section, placeOf(i), isUnicode);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t number = U32(section, 8 + 8 * i);
        const auto name = names.find(number);
        if (number > CodePage && name != names.end() && !name->second.IsEmpty()) {
            AddValue(name->second, section, placeOf(i), isUnicode, table);
        }
    }
}

} // namespace

void AddPropertySet(std::string_view bytes, ModelData_PropertyTable& table)
{
    constexpr std::size_t Header = 28;
    constexpr std::size_t SectionEntry = 20;
    constexpr std::size_t MostSections = 2;
    const std::size_t count = std::min<std::size_t>(U32(bytes, Header - 4), MostSections);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = Header + i * SectionEntry;
        if (!Has(bytes, entry, SectionEntry)) {
            return;
        }
        const std::string_view kind = bytes.substr(entry, 16);
        const std::size_t place = U32(bytes, entry + 16);
        if (!Has(bytes, place, 8)) {
            continue;
        }
        if (kind == Summary) {
            AddSection(bytes.substr(place),
                       {{2, "Title"},
                        {3, "Subject"},
                        {4, "Author"},
                        {5, "Keywords"},
                        {6, "Comments"},
                        {8, "Last saved by"},
                        {12, "Created"},
                        {13, "Modified"}},
                       false, table);
        } else if (kind == Users) {
            AddSection(bytes.substr(place), {}, true, table);
        }
    }
}

} // namespace cadex::solidworks
