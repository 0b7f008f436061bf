#include "sdk/text/Utf.h"

namespace cadex::text {
bool NextUtf8(std::string_view& bytes, char32_t& c)
{
    const internal::Utf8Character character = internal::DecodeUtf8(bytes.data(), bytes.size());
    if (!character.isSound) {
        return false;
    }
    c = character.code;
    bytes.remove_prefix(character.length);
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

Base_UTF16String ToSdkString(const std::u16string& text)
{
    static_assert(sizeof(UTF16) == sizeof(char16_t));
    return text.empty() ? Base_UTF16String()
                        : Base_UTF16String(reinterpret_cast<const UTF16*>(text.data()), text.size());
}

} // namespace cadex::text
