// Texts as files without an encoding of their own have them.
#pragma once

#include <string_view>

#include <cadex/Base_UTF16String.hxx>

namespace cadex::text {

/// Text without directives, as IGES has it: UTF-8 when valid, else ISO 8859-1; line ends dropped, blanks
/// around it too.
Base_UTF16String DecodePlainString(std::string_view raw);

/// True when there is nothing but blanks.
bool IsBlankText(std::string_view raw);

} // namespace cadex::text
