#pragma once

#include <cstdio>

namespace Zemtar::ImageFiles {

/// Whether the header of an OpenEXR file of `fileSize` bytes can be believed: every attribute lies within the
/// file, the data window has a possible size, and the file has room for the table of its chunks.
///
/// To be asked before FreeImage reads the file: its reader takes whatever memory an attribute or a data
/// window claims, several times over, before it looks for the bytes. The position in the file is left
/// anywhere.
bool isCredibleExrHeader(std::FILE* file, long fileSize);

} // namespace Zemtar::ImageFiles
