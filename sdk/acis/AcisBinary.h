// The binary form of ACIS files (SAB): the records of the text form, each value behind a tag.
//
//     if (IsBinary(bytes)) { bytes = TextFromBinary(bytes); }    // throws Unreadable
#pragma once

#include <string>
#include <string_view>

namespace cadex::acis {

bool IsBinary(std::string_view bytes);

/// The same records as text, which Records reads. What the text form has words for, and the binary one
/// numbers alone, becomes "true" and "false", and "e" with the number for one of several. The text is at most
/// some three times as long. Throws Unreadable where values are cut off or have tags that are none.
std::string TextFromBinary(std::string_view bytes);

} // namespace cadex::acis
