#include <cadex/Base_UTF16String.hxx>

#include <cstring>
#include <cwchar>

#include <cadex/internal/Utf.hxx>

namespace cadex {

namespace {

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
        const auto code = static_cast<char32_t>(text[i]);
        internal::AppendUtf16(units, code < internal::UnicodeEnd ? code : internal::UnicodeReplacement);
    }
    Terminate(units);
}

} // namespace

Base_UTF16String::Base_UTF16String(const char* utf8)
{
    const std::size_t length = utf8 != nullptr ? std::strlen(utf8) : 0;
    myUnits.reserve(length + 1);
    for (std::size_t pos = 0; pos < length;) {
        const internal::Utf8Character character = internal::DecodeUtf8(utf8 + pos, length - pos);
        internal::AppendUtf16(myUnits, character.code);
        pos += character.length;
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
            text[written] = static_cast<wchar_t>(internal::NextUtf16(myUnits.data(), Length(), pos));
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
        internal::AppendUtf8(text, internal::NextUtf16(myUnits.data(), Length(), pos));
    }
    return text;
}

const UTF16* Base_UTF16String::Data() const
{
    static constexpr UTF16 Empty = 0;
    return myUnits.empty() ? &Empty : myUnits.data();
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
