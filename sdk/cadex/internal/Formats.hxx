// Which formats the open engine behind this SDK interface reads and writes. The commercial SDK has no such
// header: guard its use with __has_include(<cadex/internal/Formats.hxx>).
#pragma once

#include <cadex/Base_Export.hxx>

namespace cadex {
namespace internal {

/// Numbered as the importers and exporters number them; 0 is no format.
enum class Format : int
{
    None = 0,
    ACIS,
    Creo,
    IFC,
    IGES,
    JT,
    NX,
    Parasolid,
    Rhino,
    SolidWorks,
    STEP
};
inline constexpr int FormatCount = 11; // with None

/// True when an engine is present; without one ReadFile, Transfer and WriteFile return false.
CADEX_EXPORT bool CanRead(Format format);
CADEX_EXPORT bool CanWrite(Format format);

} // namespace internal
} // namespace cadex
