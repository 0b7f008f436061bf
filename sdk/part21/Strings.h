// String literals of clear text.
#pragma once

#include <string_view>

#include <cadex/Base_UTF16String.hxx>

namespace cadex::part21 {

/// Decodes a string literal as Cursor::String gives it, without its quotes. The control directives \S\, \P.\,
/// \X\, \X2\ and \X4\ are resolved, doubled apostrophes and backslashes become one, line ends inside are
/// dropped (texts may be wrapped). Bytes outside ASCII are UTF-8 when the whole text is valid UTF-8, else ISO
/// 8859-1. What is malformed stays as it is written.
///
/// NOTE: ISO 10303-21, 6.4.3. For \S\ the alphabets A (ISO 8859-1), E (8859-5, Cyrillic) and G (8859-7,
/// Greek) are known; the others are read as A.
Base_UTF16String DecodeString(std::string_view raw);

} // namespace cadex::part21
