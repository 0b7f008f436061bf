// What every part of a SolidWorks file is read by: numbers at places, bounded unpacking, and why not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include <cadex/Base_UTF16String.hxx>

#include "sdk/text/Inflate.h"

namespace cadex::solidworks {

/// Why a file is refused.
class Unreadable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Whether so many bytes lie at the place.
inline bool Has(std::string_view bytes, std::size_t at, std::size_t size)
{
    return at <= bytes.size() && size <= bytes.size() - at;
}

/// The little-endian value at a place; 0 behind the end.
template <typename T>
T ValueAt(std::string_view bytes, std::size_t at)
{
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    if (Has(bytes, at, sizeof(T))) {
        std::memcpy(&value, bytes.data() + at, sizeof(T));
    }
    return value;
}

/// Text of two bytes a unit, as it lies in the file.
Base_UTF16String Utf16At(std::string_view bytes, std::size_t at, std::size_t units);

/// Inflates to exactly `size` bytes, which are taken off the budget. Throws Unreadable when the bytes become
/// something else, or more memory than the budget or their own number allows.
std::string Inflate(std::string_view packed, std::size_t size, text::Packing packing, std::size_t& budget);

/// A stream that is packed once more: an identity of 16 bytes, the sizes unpacked and packed, zlib data.
bool IsWrapped(std::string_view bytes);
/// Unpacks the wrapped data that begins at the place and moves the place behind it.
std::string Unwrap(std::string_view bytes, std::size_t& at, std::size_t& budget);

} // namespace cadex::solidworks
