#pragma once

#include "host/ZemtarCoreExport.h"

#include <compare>

namespace Zemtar {

/// The identity of an entity: unique within its document, counted from 1 in order of creation, never used
/// again. The default one identifies nothing.
class ZEMTAR_CORE_EXPORT CZemtarID
{
public:
    CZemtarID() = default;
    explicit CZemtarID(unsigned long long value) : m_value(value) {}

    bool IsNull() const { return m_value == 0; }
    unsigned long long Value() const { return m_value; }

    bool operator==(const CZemtarID&) const = default;
    std::strong_ordering operator<=>(const CZemtarID& other) const { return m_value <=> other.m_value; }

private:
    unsigned long long m_value = 0;
};

} // namespace Zemtar
