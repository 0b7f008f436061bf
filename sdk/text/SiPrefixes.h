// The prefixes of SI units, as Part 21 names them.
#pragma once

#include <string_view>

namespace cadex::text {

struct SiPrefix
{
    std::string_view name; ///< "KILO"; empty for no prefix
    double factor = 1;
    const char* symbol = ""; ///< "k", UTF-8
};

/// NOTE: ISO 10303-41, si_prefix.
inline constexpr SiPrefix SiPrefixes[] = {
    {"EXA", 1e18, "E"},  {"PETA", 1e15, "P"},  {"TERA", 1e12, "T"},   {"GIGA", 1e9, "G"},
    {"MEGA", 1e6, "M"},  {"KILO", 1e3, "k"},   {"HECTO", 1e2, "h"},   {"DECA", 1e1, "da"},
    {"DECI", 1e-1, "d"}, {"CENTI", 1e-2, "c"}, {"MILLI", 1e-3, "m"},  {"MICRO", 1e-6, "µ"},
    {"NANO", 1e-9, "n"}, {"PICO", 1e-12, "p"}, {"FEMTO", 1e-15, "f"}, {"ATTO", 1e-18, "a"}};

/// No prefix, with factor 1, for any other name.
constexpr SiPrefix SiPrefixOf(std::string_view name)
{
    for (const SiPrefix& prefix : SiPrefixes) {
        if (prefix.name == name) {
            return prefix;
        }
    }
    return {};
}

} // namespace cadex::text
