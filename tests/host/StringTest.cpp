// Text: encodings, comparison, editing.

#include "host/CZemtarString.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zemtar {
namespace {

TEST(String, KeepsEveryScalarValueThroughUtf8)
{
    std::wstring all;
    for (wchar_t c = 1; c <= 0x10FFFF; ++c) {
        if (c < 0xD800 || c > 0xDFFF) {
            all.push_back(c);
        }
    }
    const CZemtarString text(all);
    EXPECT_EQ(text.Length(), static_cast<int>(all.size()));
    EXPECT_EQ(CZemtarString(text.toStdString()).toStdWString(), all);
    EXPECT_EQ(CZemtarString(std::string("a\0b", 3)).toStdString(), std::string("a\0b", 3));
}

TEST(String, TurnsMalformedTextIntoReplacementCharacters)
{
    const std::map<std::string, std::wstring> cases = {
        {"\x80", L"\uFFFD"},                               // lone continuation
        {"a\xC3", L"a\uFFFD"},                             // cut off
        {"\xC3z", L"\uFFFDz"},                             // continuation missing
        {"\xC0\xAF", L"\uFFFD\uFFFD"},                     // overlong "/"
        {"\xE0\x80\xAF", L"\uFFFD\uFFFD\uFFFD"},           // overlong, three bytes
        {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},           // surrogate
        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"}, // above U+10FFFF
        {"\xF0\x9F\x98", L"\uFFFD"},                       // cut off emoji: one maximal part
        {"\xF0\x9F\x98"
         "a\xFF",
         L"\uFFFD"
         L"a\uFFFD"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(CZemtarString(bytes).toStdWString(), text) << testing::PrintToString(bytes);
    }
    const wchar_t wide[] = {0xD800, L'a', 0x110000, -1, 0};
    EXPECT_EQ(CZemtarString(wide).toStdString(), "\xEF\xBF\xBD"
                                                 "a\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(CZemtarString(wide).ToLower().Trim().toStdWString(), wide);
    EXPECT_TRUE(CZemtarString(wide).IsEqualTo(wide, false));
}

TEST(String, DecodingNeverFailsAndIsStable)
{
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        const std::string once = CZemtarString(bytes).toStdString();
        EXPECT_EQ(CZemtarString(once).toStdString(), once);
    }
}

TEST(String, GivesPointersThatHoldWhileTheTextIsUnchanged)
{
    CZemtarString text(L"Größe \U0001F600");
    const char* first = text;
    const char* second = text;
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "Gr\xC3\xB6\xC3\x9F"
                        "e \xF0\x9F\x98\x80");
    const CZemtarString& constant = text;
    EXPECT_EQ(std::wcslen(constant), 7U);

    static_cast<wchar_t*>(text)[0] = L'g'; // written behind the string's back
    text[1] = L'R';
    EXPECT_EQ(std::string(static_cast<const char*>(text)).substr(0, 2), "gR");
    EXPECT_EQ(constant[1], L'R');
    EXPECT_EQ(constant[99], L'\0');
    EXPECT_THROW(text[99] = L'x', std::out_of_range);

    const CZemtarString moved(std::move(text));
    EXPECT_TRUE(moved == L"gRöße \U0001F600");
    EXPECT_TRUE(CZemtarString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CZemtarString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
    EXPECT_EQ(CZemtarString(-2147483647 - 1).toStdString(), "-2147483648");
}

TEST(String, Compares)
{
    const CZemtarString text("Teil-Ä");
    EXPECT_TRUE(text == "Teil-Ä" && text == L"Teil-Ä" && text == CZemtarString("Teil-Ä"));
    EXPECT_TRUE(text != "teil-ä" && text != L"Teil" && text != CZemtarString());
    EXPECT_TRUE(text.IsEqualTo("tEIL-ä", false));
    EXPECT_FALSE(text.IsEqualTo("tEIL-ä", true));
    EXPECT_FALSE(text.IsEqualTo("teil-", false));
    EXPECT_TRUE(text.Contains("IL-ä", false) && text.Contains("il-Ä", true) && text.Contains("", true));
    EXPECT_FALSE(text.Contains("IL-ä", true));

    // Ascending: a prefix first, then by code point, beyond the Basic Multilingual Plane last.
    const std::vector<CZemtarString> ascending = {"", "B", "Ba", "a", "ä", L"\uFFFD", L"\U0001F600"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << ' ' << j;
        }
    }
}

TEST(String, Edits)
{
    EXPECT_EQ((CZemtarString("a") + "b" + L"c" + CZemtarString(7)).toStdString(), "abc7");
    EXPECT_EQ(("x" + CZemtarString("y")).toStdString(), "xy");
    EXPECT_EQ(CZemtarString(L"ÀΣЖ\U00010400x").ToLower().toStdWString(), L"àσж\U00010428x");
    EXPECT_EQ(CZemtarString(L" \t\n\u3000 a b\u00A0\u2028").Trim().toStdWString(), L"a b");
    EXPECT_TRUE(CZemtarString(L" \u2003 ").Trim().IsEmpty());

    CZemtarString text("aaa-aa");
    EXPECT_EQ(CZemtarString(text).Replace("aa", "a").toStdString(), "aa-a");
    EXPECT_EQ(CZemtarString(text).Replace("a", "aa").toStdString(), "aaaaaa-aaaa");
    EXPECT_EQ(CZemtarString(text).Replace("", "z").toStdString(), "aaa-aa");
    EXPECT_EQ(text.Replace(text, "").Length(), 0);

    const CZemtarString found("ä*b*");
    EXPECT_EQ(found.Find(L'*'), 1);
    EXPECT_EQ(found.Find("b*"), 2);
    EXPECT_EQ(found.Find(L'x'), -1);
    EXPECT_EQ(found.Find(""), 0);
    EXPECT_EQ(CZemtarString(found).TruncateAfter(1).toStdString(), "ä");
    EXPECT_EQ(CZemtarString(found).TruncateAfter(99).Length(), 4);
    EXPECT_TRUE(CZemtarString(found).TruncateAfter(-1).IsEmpty());
    EXPECT_TRUE(found.HasUnicode());
    EXPECT_FALSE(CZemtarString("\x7F").HasUnicode());

    std::ostringstream stream;
    stream << found;
    EXPECT_EQ(stream.str(), "ä*b*");
}

} // namespace
} // namespace Zemtar
