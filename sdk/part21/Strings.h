// String literals of clear text.
#pragma once

#include <string_view>

#include <cadex/Base_UTF16String.hxx>

namespace cadex::part21 {

/// Decodes a text as Cursor::String gives it, without its quotes. The control directives \S\, \P.\ (the nine
/// alphabets of ISO 8859), \X\, \X2\ and \X4\ are resolved, doubled apostrophes and backslashes become one.
/// Line ends inside are dropped (texts may be wrapped anywhere, also inside a directive), and other control
/// characters too, except tabs. Bytes outside ASCII are UTF-8 when the whole text is valid UTF-8, else ISO
/// 8859-1. What is malformed stays as it is written.
///
/// NOTE: ISO 10303-21, 6.4.3.
Base_UTF16String DecodeString(std::string_view raw);

} // namespace cadex::part21
