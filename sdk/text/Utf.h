// UTF-8 and UTF-16, one character at a time.
#pragma once

#include <string>
#include <string_view>

#include <cadex/Base_UTF16String.hxx>
#include <cadex/internal/Utf.hxx>

namespace cadex::text {

using internal::AppendUtf16;
using internal::UnicodeEnd;

/// Decodes one character of UTF-8 and moves on; false, with the bytes as they were, when they are none: a
/// byte that starts nothing, a character cut off, an over-long form, a surrogate. The bytes must not be
/// empty.
bool NextUtf8(std::string_view& bytes, char32_t& c);
bool IsUtf8(std::string_view bytes);

Base_UTF16String ToSdkString(const std::u16string& text);

} // namespace cadex::text
