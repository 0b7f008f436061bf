#pragma once

#include "apps/export/SceneExport.h"

#include <charconv>
#include <string>

class SceneParts;

/// The formats' writers; contracts as `ExportScene`.
void WriteGlb(SceneParts& scene, const std::string& file, GlbPacking packing);
void WriteObj(SceneParts& scene, const std::string& file, double unitsPerMetre);
void WritePly(SceneParts& scene, const std::string& file, double unitsPerMetre);
void WriteStl(SceneParts& scene, const std::string& file, double unitsPerMetre);

/// Appends a number in the fewest digits that give it back.
template <class Number>
void AppendNumber(std::string& text, Number number)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    text.append(digits, end);
}
