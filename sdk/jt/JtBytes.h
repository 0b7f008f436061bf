// The primitive values of a JT file, in the file's byte order.
//
//     Bytes in(segment, format);
//     const Guid kind = in.Id();
//     const std::size_t count = in.Count(4);            // at most as many as can follow
//
// Everything throws Unreadable where the bytes end or make no sense.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include <cadex/Base_UTF16String.hxx>

namespace cadex::jt {

/// The file is damaged, or no such file; what() says how.
class Unreadable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The file may be sound, but holds something that is left out.
class Unsupported : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Sixteen bytes in the order of the usual text.
struct Guid
{
    std::array<std::uint8_t, 16> bytes{};

    constexpr Guid() = default;
    /// From the usual text with hyphens.
    constexpr explicit Guid(std::string_view text)
    {
        std::size_t digit = 0;
        for (const char c : text) {
            if (c == '-' || digit >= 32) {
                continue;
            }
            const int value = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
            bytes[digit / 2] = static_cast<std::uint8_t>((bytes[digit / 2] << 4) | value);
            ++digit;
        }
    }

    friend constexpr bool operator==(const Guid&, const Guid&) = default;
    friend constexpr bool operator<(const Guid& a, const Guid& b) { return a.bytes < b.bytes; }
};

/// What decides how values are stored.
struct Format
{
    int version = 81; ///< 10 * major + minor
    bool isBigEndian = false;

    bool IsV8() const { return version < 90; }
    /// From here on version numbers have one byte.
    bool IsV10() const { return version >= 100; }
};

class Bytes
{
public:
    Bytes(std::string_view bytes, const Format& format)
        : myBytes(bytes), myFormat(format), mySwaps(format.isBigEndian != IsNativeBigEndian)
    {
    }

    const Format& FileFormat() const { return myFormat; }
    std::size_t Left() const { return myBytes.size(); }

    template <typename T>
    T Get()
    {
        static_assert(std::is_arithmetic_v<T>);
        const std::string_view bytes = Take(sizeof(T));
        std::array<char, sizeof(T)> copy{};
        for (std::size_t i = 0; i < sizeof(T); ++i) {
            copy[mySwaps ? sizeof(T) - 1 - i : i] = bytes[i];
        }
        T value{};
        std::memcpy(&value, copy.data(), sizeof(T));
        return value;
    }
    std::uint8_t U8() { return Get<std::uint8_t>(); }
    std::int16_t I16() { return Get<std::int16_t>(); }
    std::uint16_t U16() { return Get<std::uint16_t>(); }
    std::int32_t I32() { return Get<std::int32_t>(); }
    std::uint32_t U32() { return Get<std::uint32_t>(); }
    std::uint64_t U64() { return Get<std::uint64_t>(); }
    float F32() { return Get<float>(); }
    double F64() { return Get<double>(); }

    /// The number of the version that data of this file have before them.
    int Version() { return myFormat.IsV10() ? U8() : I16(); }

    std::string_view Take(std::size_t size)
    {
        if (size > myBytes.size()) {
            throw Unreadable("data end too early");
        }
        const std::string_view taken = myBytes.substr(0, size);
        myBytes.remove_prefix(size);
        return taken;
    }
    void Skip(std::size_t size) { Take(size); }

    /// A count of items of at least `itemSize` bytes, all of which can follow.
    std::size_t Count(std::size_t itemSize)
    {
        const std::int32_t count = I32();
        if (count < 0 || static_cast<std::size_t>(count) > Left() / itemSize) {
            throw Unreadable("a count is larger than what follows it");
        }
        return static_cast<std::size_t>(count);
    }

    Guid Id()
    {
        Guid id;
        const auto put = [&](std::size_t at, auto value) {
            for (std::size_t i = sizeof(value); i-- > 0; value = static_cast<decltype(value)>(value >> 8)) {
                id.bytes[at + i] = static_cast<std::uint8_t>(value & 0xFF);
            }
        };
        put(0, U32());
        put(4, U16());
        put(6, U16());
        const std::string_view rest = Take(8);
        std::memcpy(&id.bytes[8], rest.data(), rest.size());
        return id;
    }

    /// UTF-16 with its length before it.
    std::u16string Text()
    {
        std::u16string text(Count(2), u'\0');
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(U16());
        }
        return text;
    }

private:
    static constexpr bool IsNativeBigEndian = std::endian::native == std::endian::big;

    std::string_view myBytes;
    Format myFormat;
    bool mySwaps;
};

/// How much may be unpacked from a file: packed lists become far more than their bytes, and nothing in a list
/// of equal values tells a sound count from a damaged one.
class Budget
{
public:
    explicit Budget(std::size_t values) : myLeft(values) {}

    void Take(std::size_t values)
    {
        if (values > myLeft) {
            throw Unreadable("packed data ask for too much memory");
        }
        myLeft -= values;
    }

private:
    std::size_t myLeft;
};

} // namespace cadex::jt
