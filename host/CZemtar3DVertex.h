#pragma once

#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// A position or a direction: three doubles. Positions are in the unit of the document that they stand in.
class ZEMTAR_CORE_EXPORT CZemtar3DVertex
{
public:
    CZemtar3DVertex() = default;
    CZemtar3DVertex(double x, double y, double z) : m_x(x), m_y(y), m_z(z) {}

    double X() const { return m_x; }
    double Y() const { return m_y; }
    double Z() const { return m_z; }
    void SetXYZ(double x, double y, double z) { *this = CZemtar3DVertex(x, y, z); }

    bool operator==(const CZemtar3DVertex&) const = default;

private:
    double m_x = 0.0;
    double m_y = 0.0;
    double m_z = 0.0;
};

} // namespace Zemtar
