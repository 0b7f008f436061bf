// The one codec of UTF-8 and UTF-16, for strings of the model and texts of files. Not part of the interface.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cadex {
namespace internal {

/// Behind the last code point.
constexpr char32_t UnicodeEnd = 0x110000;
constexpr char32_t UnicodeReplacement = 0xFFFD;

inline bool IsSurrogate(char32_t c)
{
    return c >= 0xD800 && c < 0xE000;
}

/// What bytes begin with.
struct Utf8Character
{
    char32_t code;      ///< U+FFFD where the bytes are none
    std::size_t length; ///< in bytes, at least 1; where they are none, up to the first that cannot go on
    bool isSound;       ///< false for surrogates too, which keep their code
};

/// Decodes one character; over-long forms and what is beyond Unicode are none. `length` is that of the bytes,
/// at least 1.
inline Utf8Character DecodeUtf8(const char* bytes, std::size_t length)
{
    const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(0);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {UnicodeReplacement, 1, false};
    }
    const std::size_t whole = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    char32_t code = lead & (0x7Fu >> whole);
    for (std::size_t i = 1; i < whole; ++i) {
        // The first continuation byte must neither make the form longer than needed nor pass U+10FFFF.
        const unsigned char low = i > 1 ? 0x80 : lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned char high = i == 1 && lead == 0xF4 ? 0x8F : 0xBF;
        if (i == length || at(i) < low || at(i) > high) {
            return {UnicodeReplacement, i, false};
        }
        code = (code << 6) | (at(i) & 0x3Fu);
    }
    return {code, whole, !IsSurrogate(code)};
}

/// Appends to a string of char; surrogates take their three-byte form.
template <typename String>
void AppendUtf8(String& text, char32_t code)
{
    if (code < 0x80) {
        text.push_back(static_cast<char>(code));
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr unsigned char Leads[] = {0, 0xC0, 0xE0, 0xF0};
    text.push_back(static_cast<char>(Leads[more] | (code >> (6 * more))));
    for (int i = more - 1; i >= 0; --i) {
        text.push_back(static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F)));
    }
}

/// Appends a code point below UnicodeEnd to a string or vector of 16-bit units; surrogates stay as they are.
template <typename Units>
void AppendUtf16(Units& units, char32_t code)
{
    using Unit = typename Units::value_type;
    if (code < 0x10000) {
        units.push_back(static_cast<Unit>(code));
        return;
    }
    code -= 0x10000;
    units.push_back(static_cast<Unit>(0xD800 + (code >> 10)));
    units.push_back(static_cast<Unit>(0xDC00 + (code & 0x3FF)));
}

/// The code point at `pos` below `length`, which is moved behind it; a surrogate without a partner comes back
/// as it is.
template <typename Unit>
char32_t NextUtf16(const Unit* units, std::size_t length, std::size_t& pos)
{
    const char32_t unit = units[pos++];
    if (unit >= 0xD800 && unit < 0xDC00 && pos < length && units[pos] >= 0xDC00 && units[pos] < 0xE000) {
        return 0x10000 + ((unit - 0xD800) << 10) + (units[pos++] - 0xDC00u);
    }
    return unit;
}

} // namespace internal
} // namespace cadex
