#include "sdk/part21/Strings.h"

#include <string>

#include "sdk/text/Iso8859.h"
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
        if (c < ' ' && c != '\t') {
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
            const auto low = static_cast<unsigned char>(myRest[3]) & 0x7F;
            text::AppendUtf16(myText, text::FromIso8859(myPart, static_cast<unsigned char>(low + 0x80)));
            myRest.remove_prefix(4);
            return true;
        }
        if (StartsWith("\\P") && myRest.size() > 3 && myRest[3] == '\\' && myRest[2] >= 'A' &&
            myRest[2] <= 'I') {
            myPart = myRest[2] - 'A' + 1;
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
    int myPart = 1; ///< of ISO 8859
    std::u16string myText;
};

} // namespace

Base_UTF16String DecodeString(std::string_view raw)
{
    return text::ToSdkString(Decoder(raw).Run());
}

} // namespace cadex::part21
