// The streams of a SolidWorks file, by name. Newer files are archives of blocks, each packed and with a
// checksum, behind which a directory names them; older ones are compound files.
//
//     Container container(bytes);                             // throws Unreadable
//     if (std::optional<std::string> list = container.Read("Contents/DisplayLists")) { ... }
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/solidworks/CompoundFile.h"

namespace cadex::solidworks {

/// The bytes must outlive the container.
class Container
{
public:
    /// Throws Unreadable for what is no such file, and when a block that the directory names is not where
    /// and what it should be.
    explicit Container(std::string_view bytes);

    /// The unpacked stream, or nothing where the file has none of the name. Throws Unreadable when it is
    /// damaged, or when all that was read takes more memory than a file of this size should.
    std::optional<std::string> Read(const std::string& name);

    bool Has(const std::string& name) const;

    /// What may still be unpacked; streams that are packed within streams count, too.
    std::size_t& Budget() { return myBudget; }

private:
    struct Block
    {
        std::size_t data = 0; ///< byte
        std::uint32_t packed = 0;
        std::uint32_t size = 0;
        std::uint32_t crc = 0;
    };

    bool ReadEntry(std::size_t marker, std::size_t& end);
    void ReadDirectory();

    std::string_view myBytes;
    std::size_t myBudget;
    std::map<std::string, Block> myBlocks;
    std::optional<CompoundFile> myCompound;
};

} // namespace cadex::solidworks
