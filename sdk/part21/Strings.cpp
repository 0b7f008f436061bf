#include "sdk/part21/Strings.h"

#include <string>

#include "sdk/text/Utf.h"

namespace cadex::part21 {
namespace {

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
    explicit Decoder(std::string_view raw) : myRest(raw), myUtf8(text::IsUtf8(raw)) {}

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
        if (!myUtf8 || !text::NextUtf8(myRest, c)) {
            myRest.remove_prefix(1);
        }
        if (c == '\r' || c == '\n') {
            return;
        }
        if (c == '\'' && StartsWith("'")) {
            myRest.remove_prefix(1);
        }
        text::AppendUtf16(myText, c);
    }

    bool Directive()
    {
        if (StartsWith("\\\\")) {
            myText += u'\\';
            myRest.remove_prefix(2);
            return true;
        }
        if (StartsWith("\\S\\") && myRest.size() > 3) {
            text::AppendUtf16(myText, UpperHalf(myAlphabet, static_cast<unsigned char>(myRest[3]) & 0x7F));
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
                text::AppendUtf16(myText, c);
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
            text::AppendUtf16(myText, c < text::UnicodeEnd ? c : 0xFFFD);
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

} // namespace

Base_UTF16String DecodeString(std::string_view raw)
{
    return text::ToSdkString(Decoder(raw).Run());
}

} // namespace cadex::part21
