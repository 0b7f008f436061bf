#include <cadex/Base_UTF16String.hxx>

#include <cstring>
#include <cwchar>

namespace cadex {

namespace {

constexpr UTF32 Replacement = 0xFFFD;
constexpr UTF32 LastCodePoint = 0x10FFFF;

bool IsHighSurrogate(UTF32 unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(UTF32 unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendCodePoint(std::vector<UTF16>& units, UTF32 code)
{
    if (code > LastCodePoint) {
        code = Replacement;
    }
    if (code < 0x10000) {
        units.push_back(static_cast<UTF16>(code));
        return;
    }
    code -= 0x10000;
    units.push_back(static_cast<UTF16>(0xD800 + (code >> 10)));
    units.push_back(static_cast<UTF16>(0xDC00 + (code & 0x3FF)));
}

/// The code point that starts at `pos`, which is moved behind it; a surrogate without a partner comes back as
/// it is.
UTF32 NextCodePoint(const UTF16* units, std::size_t length, std::size_t& pos)
{
    const UTF32 unit = units[pos++];
    if (IsHighSurrogate(unit) && pos < length && IsLowSurrogate(units[pos])) {
        return 0x10000 + ((unit - 0xD800) << 10) + (units[pos++] - 0xDC00u);
    }
    return unit;
}

/// Decodes one character of UTF-8, surrogates in three-byte form included. A byte sequence that is none
/// counts as one U+FFFD up to the first byte that cannot continue it.
UTF32 NextFromUTF8(const unsigned char* text, std::size_t length, std::size_t& pos)
{
    const UTF32 lead = text[pos++];
    if (lead < 0x80) {
        return lead;
    }
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4) {
        return Replacement;
    }
    UTF32 code = lead & (0x3Fu >> more);
    for (int i = 0; i < more; ++i) {
        const UTF32 next = pos < length ? text[pos] : 0u;
        // The first continuation byte must neither make the form longer than needed nor pass U+10FFFF.
        const UTF32 low = i > 0 ? 0x80 : lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const UTF32 high = i == 0 && lead == 0xF4 ? 0x8F : 0xBF;
        if (next < low || next > high) {
            return Replacement;
        }
        code = (code << 6) | (next & 0x3F);
        ++pos;
    }
    return code;
}

void AppendUTF8(std::string& text, UTF32 code)
{
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    static constexpr unsigned char leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[more] | (code >> (6 * more)));
    for (int i = more - 1; i >= 0; --i) {
        text += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
    }
}

void Terminate(std::vector<UTF16>& units)
{
    if (!units.empty()) {
        units.push_back(0);
        units.shrink_to_fit(); // names live as long as the model
    }
}

void AppendWide(std::vector<UTF16>& units, const wchar_t* text, std::size_t length)
{
    units.reserve(length + 1);
    for (std::size_t i = 0; i < length; ++i) {
        AppendCodePoint(units, static_cast<UTF32>(text[i]));
    }
    Terminate(units);
}

} // namespace

Base_UTF16String::Base_UTF16String(const char* utf8)
{
    const std::size_t length = utf8 != nullptr ? std::strlen(utf8) : 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(utf8);
    myUnits.reserve(length + 1);
    for (std::size_t pos = 0; pos < length;) {
        AppendCodePoint(myUnits, NextFromUTF8(bytes, length, pos));
    }
    Terminate(myUnits);
}

Base_UTF16String::Base_UTF16String(const UTF16* text)
{
    std::size_t length = 0;
    while (text != nullptr && text[length] != 0) {
        ++length;
    }
    *this = Base_UTF16String(text, length);
}

Base_UTF16String::Base_UTF16String(const UTF16* text, std::size_t length)
{
    if (text != nullptr && length != 0) {
        myUnits.reserve(length + 1);
        myUnits.assign(text, text + length);
        myUnits.push_back(0);
    }
}

Base_UTF16String::Base_UTF16String(const wchar_t* text)
{
    if (text != nullptr) {
        AppendWide(myUnits, text, std::wcslen(text));
    }
}

Base_UTF16String::Base_UTF16String(const std::wstring& text)
{
    AppendWide(myUnits, text.data(), text.size());
}

std::wstring Base_UTF16String::ToWString() const
{
    std::wstring text(Length(), L'\0');
    std::size_t written = 0;
    for (std::size_t pos = 0; pos < Length(); ++written) {
        if constexpr (sizeof(wchar_t) >= sizeof(UTF32)) {
            text[written] = static_cast<wchar_t>(NextCodePoint(myUnits.data(), Length(), pos));
        } else {
            text[written] = static_cast<wchar_t>(myUnits[pos++]);
        }
    }
    text.resize(written);
    return text;
}

std::string Base_UTF16String::ToUTF8() const
{
    std::string text;
    text.reserve(Length());
    for (std::size_t pos = 0; pos < Length();) {
        AppendUTF8(text, NextCodePoint(myUnits.data(), Length(), pos));
    }
    return text;
}

const UTF16* Base_UTF16String::Data() const
{
    static constexpr UTF16 empty = 0;
    return myUnits.empty() ? &empty : myUnits.data();
}

Base_UTF16String Base_UTF16String::operator+(const Base_UTF16String& other) const
{
    Base_UTF16String sum;
    sum.myUnits.reserve(Length() + other.Length() + 1);
    sum.myUnits.assign(Data(), Data() + Length());
    sum.myUnits.insert(sum.myUnits.end(), other.Data(), other.Data() + other.Length());
    Terminate(sum.myUnits);
    return sum;
}

} // namespace cadex
