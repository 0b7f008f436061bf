#include "sdk/solidworks/SldBytes.h"

#include <limits>
#include <new>
#include <vector>

#include <zlib.h>

namespace cadex::solidworks {

namespace {

/// Deflate packs no tighter than this.
constexpr std::size_t BestRatio = 1032;
/// What one call of the unpacker takes or gives.
constexpr std::size_t MostAtOnce = std::numeric_limits<uInt>::max();

constexpr std::string_view WrapperId("\x23\x1d\xd5\x71\xda\x81\x48\xa2\xa8\x58\x98\xb2\x1b\x89\xef\x99", 16);
constexpr std::size_t WrapperSize = 24;

} // namespace

Base_UTF16String Utf16At(std::string_view bytes, std::size_t at, std::size_t units)
{
    if (units > bytes.size() / 2 || !Has(bytes, at, units * 2)) {
        return {};
    }
    std::vector<UTF16> text(units);
    std::memcpy(text.data(), bytes.data() + at, units * 2);
    return {text.data(), units};
}

std::string Inflate(std::string_view packed, std::size_t size, Packing packing, std::size_t& budget)
{
    if (packed.size() > MostAtOnce || size > MostAtOnce) {
        throw Unreadable("a packed stream is too large");
    }
    if (size > budget || size / BestRatio > packed.size()) {
        throw Unreadable("a packed stream claims too much memory");
    }
    budget -= size;
    std::string result(size, '\0');
    z_stream stream{};
    if (inflateInit2(&stream, packing == Packing::Raw ? -MAX_WBITS : MAX_WBITS) != Z_OK) {
        throw std::bad_alloc();
    }
    Bytef none = 0; // where nothing is expected, the unpacker still wants a place
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = size == 0 ? &none : reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(size);
    const int outcome = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    if (outcome != Z_STREAM_END || stream.avail_out != 0) {
        throw Unreadable("a packed stream is damaged");
    }
    return result;
}

std::uint32_t Checksum(std::string_view bytes)
{
    uLong crc = 0;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, MostAtOnce);
        crc = crc32(crc, reinterpret_cast<const Bytef*>(piece.data()), static_cast<uInt>(piece.size()));
        bytes.remove_prefix(piece.size());
    }
    return static_cast<std::uint32_t>(crc);
}

bool IsWrapped(std::string_view bytes)
{
    return bytes.size() >= WrapperSize && bytes.substr(0, WrapperId.size()) == WrapperId;
}

std::string Unwrap(std::string_view bytes, std::size_t& at, std::size_t& budget)
{
    if (!Has(bytes, at, WrapperSize) || !IsWrapped(bytes.substr(at))) {
        throw Unreadable("a wrapped stream is damaged");
    }
    const std::size_t size = ValueAt<std::uint32_t>(bytes, at + 16);
    const std::size_t packed = ValueAt<std::uint32_t>(bytes, at + 20);
    if (!Has(bytes, at + WrapperSize, packed)) {
        throw Unreadable("a wrapped stream ends too early");
    }
    const std::string_view data = bytes.substr(at + WrapperSize, packed);
    at += WrapperSize + packed;
    return size == 0 ? std::string() : Inflate(data, size, Packing::Zlib, budget);
}

} // namespace cadex::solidworks
