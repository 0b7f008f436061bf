// GlobalIds: 128 bits in 22 characters, the same for the same place in the same model.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace cadex::ifc {

/// A 128-bit key of something in the model, mixed from that of its parent, what it is and its number among
/// its siblings. Different inputs give different keys for every practical purpose.
class GuidKey
{
public:
    GuidKey() = default;
    GuidKey Child(std::string_view kind, std::uint64_t number) const;
    /// The text form that IFC prescribes: 22 characters of [0-9A-Za-z_$], the first below 4.
    std::string Text() const;

private:
    std::array<std::uint64_t, 2> myBits{0x6a09e667f3bcc908U, 0xbb67ae8584caa73bU};
};

/// The text has the form of a GlobalId.
bool IsGuid(std::string_view text);

} // namespace cadex::ifc
