// A first look at an IGES file, before the kernel sees it.
#pragma once

#include <filesystem>

namespace cadex::iges {

/// True when the file can be an IGES file: regular, and with lines of a start, a global and a directory
/// section. The kernel takes anything for one and makes tables of the sizes that it finds.
bool IsSoundIges(const std::filesystem::path& file);

} // namespace cadex::iges
