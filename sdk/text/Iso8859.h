// The character sets of ISO 8859 that exchange files may switch to.
#pragma once

namespace cadex::text {

/// The code point of a byte in part 1 (Western European) to 9 (Turkish); U+FFFD where the part has none.
/// Other parts are taken as ISO 8859-1.
char32_t FromIso8859(int part, unsigned char byte);

} // namespace cadex::text
