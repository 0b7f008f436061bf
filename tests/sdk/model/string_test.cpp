// Texts of the SDK: conversions lose nothing and accept anything.
#include <cadex/Base_UTF16String.hxx>

#include <gtest/gtest.h>

#include <vector>

namespace {

using cadex::Base_UTF16String;
using cadex::UTF16;
using Units = std::vector<UTF16>;

Units UnitsOf(const Base_UTF16String& text)
{
    return Units(text.Data(), text.Data() + text.Length());
}

TEST(Utf16String, ReadsUtf8WhateverTheBytes)
{
    const struct
    {
        const char* utf8;
        Units units;
    } cases[] = {
        {"", {}},
        {"A\xC3\xBC\xE6\x97\xA5", {'A', 0xFC, 0x65E5}},
        {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
        {"\xF4\x90\x80\x80", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD}}, // above U+10FFFF
        {"\x80z\xC3", {0xFFFD, 'z', 0xFFFD}},                   // stray and cut off
        {"\xC0\xAF", {0xFFFD, 0xFFFD}},                         // longer than needed
        {"\xE0\x80\xAF", {0xFFFD, 0xFFFD, 0xFFFD}},
        {"\xE6\x97z", {0xFFFD, 'z'}},
        {"\xFF\xFE", {0xFFFD, 0xFFFD}},
        {"\xED\xA0\xBDq", {0xD83D, 'q'}}, // a surrogate alone, as this class writes it
    };
    for (const auto& c : cases) {
        EXPECT_EQ(UnitsOf(c.utf8), c.units) << c.utf8;
        EXPECT_EQ(Base_UTF16String(c.utf8).Data()[c.units.size()], 0);
    }
    EXPECT_TRUE(Base_UTF16String(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(Base_UTF16String(static_cast<const UTF16*>(nullptr)).IsEmpty());
    EXPECT_TRUE(Base_UTF16String(static_cast<const wchar_t*>(nullptr)).IsEmpty());
}

TEST(Utf16String, RoundTripsEveryFormLosslessly)
{
    const Units samples[] = {{'a', 0x65E5}, {0xD83D, 0xDE00},      {0xDE00, 0xD83D},
                             {0xD83D},      {0xDC00, 'x', 0xDBFF}, {0xFEFF, 0xFFFF, 1}};
    for (const Units& units : samples) {
        const Base_UTF16String text(units.data(), units.size());
        EXPECT_EQ(UnitsOf(Base_UTF16String(text.ToWString())), units);
        EXPECT_EQ(UnitsOf(Base_UTF16String(text.ToWString().c_str())), units);
        EXPECT_EQ(UnitsOf(Base_UTF16String(text.ToUTF8().c_str())), units);
    }
    if (sizeof(wchar_t) == 4) {
        EXPECT_EQ(Base_UTF16String("\xF0\x9F\x98\x80").ToWString().size(), 1u);
        EXPECT_EQ(UnitsOf(Base_UTF16String(std::wstring{static_cast<wchar_t>(0x110000)})), Units{0xFFFD});
    }
}

} // namespace
