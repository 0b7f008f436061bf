#include "sdk/text/PlainText.h"

#include <string>

#include "sdk/text/Utf.h"

namespace cadex::text {

Base_UTF16String DecodePlainString(std::string_view raw)
{
    while (!raw.empty() && static_cast<unsigned char>(raw.front()) <= ' ') {
        raw.remove_prefix(1);
    }
    while (!raw.empty() && static_cast<unsigned char>(raw.back()) <= ' ') {
        raw.remove_suffix(1);
    }
    const bool utf8 = IsUtf8(raw);
    std::u16string text;
    while (!raw.empty()) {
        char32_t c = static_cast<unsigned char>(raw[0]);
        if (!utf8 || !NextUtf8(raw, c)) {
            raw.remove_prefix(1);
        }
        if (c != '\r' && c != '\n') {
            AppendUtf16(text, c);
        }
    }
    return ToSdkString(text);
}

bool IsBlankText(std::string_view raw)
{
    for (const char c : raw) {
        if (static_cast<unsigned char>(c) > ' ') {
            return false;
        }
    }
    return true;
}

} // namespace cadex::text
