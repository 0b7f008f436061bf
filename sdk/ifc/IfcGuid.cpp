#include "sdk/ifc/IfcGuid.h"

#include <algorithm>

namespace cadex::ifc {
namespace {

constexpr std::string_view Digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
constexpr std::size_t Length = 22;

/// NOTE: the finaliser of SplitMix64 (G. Steele, D. Lea, C. Flood, "Fast splittable pseudorandom number
/// generators").
std::uint64_t Mix(std::uint64_t value)
{
    value += 0x9e3779b97f4a7c15U;
    value = (value ^ value >> 30U) * 0xbf58476d1ce4e5b9U;
    value = (value ^ value >> 27U) * 0x94d049bb133111ebU;
    return value ^ value >> 31U;
}

} // namespace

GuidKey GuidKey::Child(std::string_view kind, std::uint64_t number) const
{
    GuidKey child(*this);
    const auto take = [&child](std::uint64_t value) {
        child.myBits[0] = Mix(child.myBits[0] ^ value);
        child.myBits[1] = Mix(child.myBits[1] + value) ^ child.myBits[0];
    };
    for (char c : kind) {
        take(static_cast<unsigned char>(c));
    }
    take(0x100);
    take(number);
    return child;
}

std::string GuidKey::Text() const
{
    // Six bits a character from the low end; the first of the 22 holds the two bits that are left.
    std::string text(Length, '0');
    std::uint64_t high = myBits[0];
    std::uint64_t low = myBits[1];
    for (std::size_t i = Length; i-- > 0;) {
        text[i] = Digits[low & 63U];
        low = low >> 6U | high << 58U;
        high >>= 6U;
    }
    return text;
}

bool IsGuid(std::string_view text)
{
    return text.size() == Length && text.front() >= '0' && text.front() <= '3' &&
           std::all_of(text.begin(), text.end(),
                       [](char c) { return Digits.find(c) != std::string_view::npos; });
}

} // namespace cadex::ifc
