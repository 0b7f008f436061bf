#include "sdk/occt/StepStrings.h"

#include <cstdint>
#include <string>

namespace cadex {
namespace occt {
namespace {

constexpr char32_t Surrogates = 0xD800;
constexpr char32_t SurrogatesEnd = 0xE000;
constexpr char32_t UnicodeEnd = 0x110000;

void Append(std::u16string& text, char32_t c)
{
    if (c < 0x10000) {
        text += static_cast<char16_t>(c);
    } else {
        text += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

// Decodes one character of UTF-8 and moves on; false when the bytes are none.
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

int HexDigit(char c)
{
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                  : -1;
}

// Reads `digits` hexadecimal digits; line ends between them are wrapping. False when there are fewer.
bool Hex(std::string_view& rest, int digits, char32_t& value)
{
    std::string_view p = rest;
    char32_t read = 0;
    while (digits > 0 && !p.empty()) {
        const int digit = HexDigit(p[0]);
        if (digit >= 0) {
            read = read * 16 + static_cast<char32_t>(digit);
            --digits;
        } else if (p[0] != '\r' && p[0] != '\n') {
            return false;
        }
        p.remove_prefix(1);
    }
    if (digits > 0) {
        return false;
    }
    rest = p;
    value = read;
    return true;
}

// The character that \S\ and the code mean in an alphabet.
char32_t UpperHalf(char alphabet, unsigned char code)
{
    const char32_t latin = static_cast<char32_t>(code) + 0x80;
    if (alphabet == 'E' && latin > 0xA0 && latin != 0xAD) {
        return latin == 0xF0 ? 0x2116 : latin == 0xFD ? 0xA7 : latin + 0x360;
    }
    if (alphabet == 'G' && latin >= 0xB4 && latin != 0xB7 && latin != 0xBB && latin != 0xBD) {
        return latin + 0x2D0;
    }
    return latin;
}

class Decoder
{
public:
    explicit Decoder(std::string_view raw) : myRest(raw), myUtf8(IsUtf8(raw)) {}

    std::u16string Run()
    {
        while (!myRest.empty()) {
            if (myRest[0] == '\\' && Directive()) {
                continue;
            }
            Plain();
        }
        return std::move(myText);
    }

private:
    bool StartsWith(std::string_view start) const { return myRest.substr(0, start.size()) == start; }

    void Plain()
    {
        const char first = myRest[0];
        char32_t c = static_cast<unsigned char>(first);
        if (!myUtf8 || !NextUtf8(myRest, c)) {
            myRest.remove_prefix(1);
        }
        if (c == '\r' || c == '\n') {
            return;
        }
        if (c == '\'' && StartsWith("'")) {
            myRest.remove_prefix(1);
        }
        Append(myText, c);
    }

    bool Directive()
    {
        if (StartsWith("\\\\")) {
            myText += u'\\';
            myRest.remove_prefix(2);
            return true;
        }
        if (StartsWith("\\S\\") && myRest.size() > 3) {
            Append(myText, UpperHalf(myAlphabet, static_cast<unsigned char>(myRest[3]) & 0x7F));
            myRest.remove_prefix(4);
            return true;
        }
        if (StartsWith("\\P") && myRest.size() > 3 && myRest[3] == '\\') {
            myAlphabet = myRest[2];
            myRest.remove_prefix(4);
            return true;
        }
        char32_t c = 0;
        if (StartsWith("\\X\\")) {
            std::string_view rest = myRest.substr(3);
            if (Hex(rest, 2, c)) {
                Append(myText, c);
                myRest = rest;
                return true;
            }
            return false;
        }
        return (StartsWith("\\X2\\") && Wide(4)) || (StartsWith("\\X4\\") && Wide(8));
    }

    // \X2\ and \X4\: characters of four or eight digits up to \X0\, which some writers forget.
    bool Wide(int digits)
    {
        std::string_view rest = myRest.substr(4);
        char32_t c = 0;
        bool any = false;
        while (Hex(rest, digits, c)) {
            any = true;
            // The halves of a surrogate pair stay as they are: together they are a character of UTF-16.
            Append(myText, c < UnicodeEnd ? c : 0xFFFD);
        }
        while (!rest.empty() && (rest[0] == '\r' || rest[0] == '\n')) {
            rest.remove_prefix(1);
        }
        if (rest.substr(0, 4) == "\\X0\\") {
            rest.remove_prefix(4);
            any = true;
        }
        if (any) {
            myRest = rest;
        }
        return any;
    }

    std::string_view myRest;
    const bool myUtf8;
    char myAlphabet = 'A';
    std::u16string myText;
};

Base_UTF16String ToSdkString(const std::u16string& text)
{
    static_assert(sizeof(UTF16) == sizeof(char16_t));
    return text.empty() ? Base_UTF16String()
                        : Base_UTF16String(reinterpret_cast<const UTF16*>(text.data()), text.size());
}

} // namespace

Base_UTF16String DecodeStepString(std::string_view raw)
{
    return ToSdkString(Decoder(raw).Run());
}

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
            Append(text, c);
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

} // namespace occt
} // namespace cadex
