// Deflate, and the checksum that formats put beside it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace cadex::text {

enum class Packing
{
    Raw, ///< deflate alone
    Zlib ///< with zlib's header and checksum
};

/// Whether bytes that became so many can be packed that well: deflate packs no tighter than 1 to 1032. Ask
/// before memory is taken for a size that a file claims.
bool CanInflateTo(std::string_view packed, std::size_t size);

/// Inflates to exactly as many bytes as the target has. False when the bytes become something else or more.
/// Throws std::bad_alloc alone.
bool Inflate(std::string_view packed, Packing packing, std::string& target);

/// CRC-32 as in ZIP archives and PNG pictures, going on from that of the bytes before (0: none).
std::uint32_t Crc32(std::uint32_t before, std::string_view bytes);

} // namespace cadex::text
