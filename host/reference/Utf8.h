#pragma once

#include <string>
#include <string_view>

namespace Zemtar {

/// Decodes UTF-8; each maximal malformed part becomes one U+FFFD. NOTE: The Unicode Standard, section 3.9,
/// table 3-7 (well-formed byte sequences) and "U+FFFD Substitution of Maximal Subparts".
std::wstring DecodeUtf8(std::string_view bytes);

/// Encodes code points; what is no Unicode scalar value becomes U+FFFD.
std::string EncodeUtf8(std::wstring_view text);

} // namespace Zemtar
