#pragma once

#include "apps/export/SceneExport.h"

#include <charconv>
#include <string>

class OutputFile;
class SceneParts;

/// The formats' writers fill a file that the caller commits; contracts as `ExportScene`. The MTL file of an
/// OBJ is put in place before, since the OBJ names it.
void WriteGlb(SceneParts& scene, OutputFile& file, GlbPacking packing);
void WriteObj(SceneParts& scene, OutputFile& file, double unitsPerMetre);
void WritePly(SceneParts& scene, OutputFile& file, double unitsPerMetre);
void WriteStl(SceneParts& scene, OutputFile& file, double unitsPerMetre);

/// Appends a number in the fewest digits that give it back.
template <class Number>
void AppendNumber(std::string& text, Number number)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    text.append(digits, end);
}
