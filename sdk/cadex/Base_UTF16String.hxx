// Text of the SDK: UTF-16 units, a value class. Names, properties and file names cross the border in it.
//
//     Base_UTF16String name("Schraube M8 \u00d7 20");      // narrow text is UTF-8
//     std::wstring wide = name.ToWString();
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstddef>
#include <string>
#include <vector>

#include <cadex/Base_Types.hxx>

namespace cadex {

/// Conversions never fail. Malformed UTF-8 and values above U+10FFFF become U+FFFD; surrogates without a
/// partner are kept through every conversion (in UTF-8 as their three-byte form), so UTF-16 in, any form out
/// and back is lossless. Null pointers are empty text.
class CADEX_EXPORT Base_UTF16String
{
public:
    Base_UTF16String() = default;
    Base_UTF16String(const char* utf8);
    Base_UTF16String(const UTF16* text);
    Base_UTF16String(const UTF16* text, std::size_t length);
    /// UTF-32 where wchar_t has 32 bits, else UTF-16.
    Base_UTF16String(const wchar_t* text);
    Base_UTF16String(const std::wstring& text);

    Base_UTF16String& operator=(const char* utf8) { return *this = Base_UTF16String(utf8); }
    Base_UTF16String& operator=(const UTF16* text) { return *this = Base_UTF16String(text); }
    Base_UTF16String& operator=(const std::wstring& text) { return *this = Base_UTF16String(text); }

    /// UTF-32 where wchar_t has 32 bits (a surrogate pair becomes one character), else UTF-16.
    std::wstring ToWString() const;
    std::string ToUTF8() const;

    /// Zero-terminated; valid until the text changes.
    const UTF16* Data() const;
    /// Number of UTF-16 units without the terminator.
    std::size_t Length() const { return myUnits.empty() ? 0 : myUnits.size() - 1; }
    bool IsEmpty() const { return myUnits.empty(); }
    void Clear() { myUnits.clear(); }

    bool operator==(const Base_UTF16String& other) const { return myUnits == other.myUnits; }
    bool operator!=(const Base_UTF16String& other) const { return myUnits != other.myUnits; }
    Base_UTF16String operator+(const Base_UTF16String& other) const;

private:
    std::vector<UTF16> myUnits; // with terminator; no units at all when empty
};

} // namespace cadex
