#include "sdk/text/Utf.h"

namespace cadex::text {
namespace {

constexpr char32_t Surrogates = 0xD800;
constexpr char32_t SurrogatesEnd = 0xE000;

} // namespace

bool NextUtf8(std::string_view& bytes, char32_t& c)
{
    const auto first = static_cast<unsigned char>(bytes[0]);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || bytes.size() < length) {
        return false;
    }
    static constexpr unsigned char FirstBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    static constexpr char32_t Smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    c = first & FirstBits[length];
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0) != 0x80) {
            return false;
        }
        c = (c << 6) | (byte & 0x3F);
    }
    if (c < Smallest[length] || c >= UnicodeEnd || (c >= Surrogates && c < SurrogatesEnd)) {
        return false;
    }
    bytes.remove_prefix(length);
    return true;
}

bool IsUtf8(std::string_view bytes)
{
    char32_t c = 0;
    while (!bytes.empty()) {
        if (!NextUtf8(bytes, c)) {
            return false;
        }
    }
    return true;
}

void AppendUtf16(std::u16string& text, char32_t c)
{
    if (c < 0x10000) {
        text += static_cast<char16_t>(c);
    } else {
        text += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

Base_UTF16String ToSdkString(const std::u16string& text)
{
    static_assert(sizeof(UTF16) == sizeof(char16_t));
    return text.empty() ? Base_UTF16String()
                        : Base_UTF16String(reinterpret_cast<const UTF16*>(text.data()), text.size());
}

} // namespace cadex::text
