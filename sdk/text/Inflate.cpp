#include "sdk/text/Inflate.h"

#include <limits>
#include <new>

#include <zlib.h>

namespace cadex::text {

namespace {

constexpr std::size_t BestRatio = 1032;
/// What one call of zlib takes or gives.
constexpr std::size_t MostAtOnce = std::numeric_limits<uInt>::max();

} // namespace

bool CanInflateTo(std::string_view packed, std::size_t size)
{
    return size / BestRatio <= packed.size() && size <= MostAtOnce && packed.size() <= MostAtOnce;
}

bool Inflate(std::string_view packed, Packing packing, std::string& target)
{
    if (!CanInflateTo(packed, target.size())) {
        return false;
    }
    z_stream stream{};
    if (inflateInit2(&stream, packing == Packing::Raw ? -MAX_WBITS : MAX_WBITS) != Z_OK) {
        throw std::bad_alloc();
    }
    Bytef none = 0; // zlib wants a place even where nothing is expected
    // and takes what it reads as not constant, though it changes nothing
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = target.empty() ? &none : reinterpret_cast<Bytef*>(target.data());
    stream.avail_out = static_cast<uInt>(target.size());
    const int outcome = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    return outcome == Z_STREAM_END && stream.avail_out == 0;
}

std::uint32_t Crc32(std::uint32_t before, std::string_view bytes)
{
    uLong crc = before;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, MostAtOnce);
        crc = crc32(crc, reinterpret_cast<const Bytef*>(piece.data()), static_cast<uInt>(piece.size()));
        bytes.remove_prefix(piece.size());
    }
    return static_cast<std::uint32_t>(crc);
}

} // namespace cadex::text
