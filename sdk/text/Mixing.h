// Numbers that look random and are the same for the same input: for ids that files need.
#pragma once

#include <cstddef>
#include <cstdint>

#include <cadex/Base_UTF16String.hxx>

namespace cadex::text {

/// NOTE: the finaliser of G. Steele, D. Lea, C. Flood, "Fast splittable pseudorandom number generators",
/// 2014.
inline std::uint64_t Mixed(std::uint64_t bits)
{
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31);
}

inline std::uint64_t Mixed(std::uint64_t seed, const Base_UTF16String& text)
{
    for (std::size_t i = 0; i < text.Length(); ++i) {
        seed = Mixed(seed + text.Data()[i] + 1);
    }
    return seed;
}

} // namespace cadex::text
