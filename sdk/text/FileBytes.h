// Whole files in memory.
#pragma once

#include <filesystem>
#include <string>

#include <cadex/Base_UTF16String.hxx>

namespace cadex::text {

/// Reads a regular file. False when there is none (a folder is none), when it is empty or cannot be read to
/// its end; the reason is then reported.
bool ReadBytes(const std::filesystem::path& file, std::string& bytes);

/// Name of the file without folder and extension.
Base_UTF16String StemOf(const std::filesystem::path& file);

} // namespace cadex::text
