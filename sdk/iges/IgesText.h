// A first look at an IGES file, before the kernel sees it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <set>

namespace cadex::iges {

struct Findings
{
    /// The file can be an IGES file: regular, and with lines of a start, a global, a directory and a
    /// parameter section. The kernel takes anything for one and makes tables of the sizes that it finds.
    bool isIges = false;
    bool isWhole = false;   ///< ends with the line that counts the others, and the counts are right
    std::set<int> unusable; ///< directory numbers of entities with numbers that are none or beyond all range
    std::size_t entities = 0; ///< in the directory
    std::size_t bare = 0;     ///< of them, those without parameters
};

Findings LookAt(const std::filesystem::path& file);

} // namespace cadex::iges
