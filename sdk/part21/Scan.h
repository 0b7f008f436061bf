// The lexical rules of clear text (ISO 10303-21, section 6) that the index and the cursor share. Comments are
// blanks by the time anything but the index looks at the text.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace cadex::part21 {

/// Every control character is one, as they are of no meaning outside texts.
inline bool IsBlank(char c)
{
    return static_cast<unsigned char>(c) <= ' ';
}

inline bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Of keywords: letters, digits, _, and what names of sections and of user defined types have.
inline bool IsNameCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '_' || (c >= 'a' && c <= 'z') || c == '!' || c == '-';
}

inline const char* SkipBlanks(const char* p, const char* end)
{
    while (p < end && IsBlank(*p)) {
        ++p;
    }
    return p;
}

/// From the opening quote to behind the closing one, `end` when there is none. A doubled apostrophe is the
/// end of one text and the start of the next.
inline const char* SkipQuoted(const char* p, const char* end, char quote = '\'')
{
    do {
        const void* close = std::memchr(p + 1, quote, static_cast<std::size_t>(end - p - 1));
        if (close == nullptr) {
            return end;
        }
        p = static_cast<const char*>(close) + 1;
    } while (p < end && *p == quote);
    return p;
}

/// Behind the parenthesis that closes; `p` stands behind the opening one.
inline const char* SkipToClose(const char* p, const char* end)
{
    for (std::size_t depth = 1; p < end;) {
        const char c = *p;
        if (c == '\'') {
            p = SkipQuoted(p, end);
            continue;
        }
        ++p;
        if (c == '(') {
            ++depth;
        } else if (c == ')' && --depth == 0) {
            return p;
        }
    }
    return end;
}

inline std::string_view NameAt(const char* p, const char* end)
{
    const char* const start = p;
    while (p < end && IsNameCharacter(*p)) {
        ++p;
    }
    return {start, static_cast<std::size_t>(p - start)};
}

} // namespace cadex::part21
