#pragma once

#include "host/CZemtar3DVertex.h"
#include "host/ZemtarCoreExport.h"

#include <array>

namespace Zemtar {

/// A 4 by 4 transform for column vectors: column 3 is the translation, `a * b` applies b first. The identity
/// by default.
///
///     CZemtarMatrix placement;
///     placement.M(0, 3) = 2.0;                                   // two units along x
///     CZemtar3DVertex p = placement.TransformPoint(CZemtar3DVertex(1.0, 0.0, 0.0));   // (3, 0, 0)
class ZEMTAR_CORE_EXPORT CZemtarMatrix
{
public:
    CZemtarMatrix() = default;

    /// Gives the element at `row`, `column`, both 0 to 3; other indices are undefined behaviour.
    double& M(int row, int column) { return m_values[static_cast<unsigned>(4 * row + column)]; }
    double M(int row, int column) const { return m_values[static_cast<unsigned>(4 * row + column)]; }
    /// Gives the 16 elements, row by row.
    const double* Data() const { return m_values.data(); }

    bool IsIdentity() const { return *this == CZemtarMatrix(); }
    bool operator==(const CZemtarMatrix&) const = default;

    CZemtarMatrix operator*(const CZemtarMatrix& other) const;
    /// Transforms a position by rows 0 to 2; row 3 is taken to be (0, 0, 0, 1).
    CZemtar3DVertex TransformPoint(const CZemtar3DVertex& point) const;

private:
    std::array<double, 16> m_values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

} // namespace Zemtar
