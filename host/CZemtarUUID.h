#pragma once

#include "host/CZemtarString.h"
#include "host/ZemtarCoreExport.h"

#include <array>

namespace Zemtar {

/// A universally unique identifier, exchanged as text. NOTE: text form of RFC 4122, section 3.
///
///     CZemtarUUID id("{6BA7B810-9DAD-11D1-80B4-00C04FD430C8}");
///     CZemtarString text = id;   // "{6ba7b810-9dad-11d1-80b4-00c04fd430c8}"
class ZEMTAR_CORE_EXPORT CZemtarUUID
{
public:
    /// Gives the null UUID, all zero.
    CZemtarUUID() = default;
    /// Takes 32 hexadecimal digits of either case in groups of 8, 4, 4, 4 and 12 joined by "-", with or
    /// without braces around. Any other text gives the null UUID.
    explicit CZemtarUUID(const CZemtarString& text);

    /// Gives the braced lower-case form, 38 characters.
    operator CZemtarString() const;
    bool IsNull() const { return *this == CZemtarUUID(); }

    bool operator==(const CZemtarUUID&) const = default;
    bool operator<(const CZemtarUUID& other) const { return m_bytes < other.m_bytes; }

private:
    std::array<unsigned char, 16> m_bytes{};
};

} // namespace Zemtar
