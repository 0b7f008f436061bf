#pragma once

#include "host/CZemtarEntity.h"
#include "host/CZemtarUnit.h"
#include "host/ZemtarCoreExport.h"

#include <cstddef>
#include <vector>

namespace Zemtar {

/// Base of the tables of doubles: `Width` numbers an entry, all in one block of memory.
///
///     vertices->Reserve(3 * triangleCount);          // one allocation, then cheap appends
///     vertices->Append(x, y, z);
///     const double* xyz = vertices->Data();          // 3 * Count() doubles
///
/// Indices beyond `Count()` are undefined behaviour. Pointers from `Data` hold until the table grows.
template <std::size_t EntryWidth>
class ZEMTAR_CORE_EXPORT CZemtarCoordinateTable : public CZemtarEntity
{
public:
    static constexpr std::size_t Width = EntryWidth;

    unsigned int Count() const { return static_cast<unsigned int>(m_values.size() / Width); }
    bool IsEmpty() const { return m_values.empty(); }

    /// Makes room for `count` entries altogether.
    void Reserve(std::size_t count) { m_values.reserve(count * Width); }
    /// Sets the number of entries; new ones are zero, surplus ones go. Memory is kept: see `ReleaseSurplus`.
    void Resize(std::size_t count) { m_values.resize(count * Width); }
    /// Gives back the memory that the entries do not need.
    void ReleaseSurplus() { m_values.shrink_to_fit(); }

    const double* Data() const { return m_values.data(); }
    double* Data() { return m_values.data(); }

    bool IsDoublePrecision() const { return m_doublePrecision; }

protected:
    CZemtarCoordinateTable(CZemtarDocument& document, bool doublePrecision)
        : CZemtarEntity(document), m_doublePrecision(doublePrecision)
    {
    }
    /// Copies the entries of `other` into a new table of `document`.
    CZemtarCoordinateTable(CZemtarDocument& document, const CZemtarCoordinateTable& other)
        : CZemtarEntity(document), m_values(other.m_values), m_doublePrecision(other.m_doublePrecision)
    {
    }

    void AppendEntry(const double (&entry)[Width])
    {
        m_values.insert(m_values.end(), entry, entry + Width);
        if (!m_doublePrecision) {
            RoundLastEntry();
        }
    }
    void ScaleAll(const CZemtarLengthRatio& ratio)
    {
        for (double& value : m_values) {
            value = ratio.Apply(value);
        }
    }

private:
    void RoundLastEntry()
    {
        for (std::size_t i = m_values.size() - Width; i < m_values.size(); ++i) {
            m_values[i] = static_cast<double>(static_cast<float>(m_values[i]));
        }
    }

    std::vector<double> m_values;
    bool m_doublePrecision;
};

} // namespace Zemtar
