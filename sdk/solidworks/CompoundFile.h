// Compound files of OLE: sectors that chains of a table join to streams, and a directory of them.
//
//     const CompoundFile file(bytes);                      // throws Unreadable
//     for (const auto& [name, stream] : file.Streams()) { file.BytesOf(stream) ... }
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "sdk/solidworks/SldBytes.h"

namespace cadex::solidworks {

/// The bytes must outlive the file.
class CompoundFile
{
public:
    struct Stream
    {
        std::uint32_t first = 0; ///< sector
        std::uint32_t size = 0;
    };

    static bool IsOne(std::string_view bytes);

    explicit CompoundFile(std::string_view bytes);

    /// By their names in UTF-8, with those of the folders around them: "Contents/Definition".
    const std::map<std::string, Stream>& Streams() const { return myStreams; }
    /// Throws Unreadable where the chain of sectors does not hold the whole stream.
    std::string BytesOf(const Stream& stream) const;

private:
    struct Entry;
    using Table = std::vector<std::uint32_t>; ///< for each sector the next one

    std::string_view SectorAt(std::uint32_t sector) const;
    std::string Chain(std::uint32_t first, std::uint64_t size) const;
    std::string SmallChain(std::uint32_t first, std::uint32_t size) const;
    void ReadTable();
    void ReadDirectory();

    std::string_view myBytes;
    std::size_t mySectorSize = 512;
    std::size_t mySmallSize = 64;
    std::uint32_t mySmallLimit = 4096; ///< streams below it lie in small sectors
    Table myNext;
    Table myNextSmall;
    std::string mySmallSectors;
    std::map<std::string, Stream> myStreams;
};

} // namespace cadex::solidworks
