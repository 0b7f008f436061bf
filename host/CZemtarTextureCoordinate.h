#pragma once

#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// One texture coordinate (u, v); (0, 0) is the image's lower left corner, (1, 1) its upper right one.
class ZEMTAR_CORE_EXPORT CZemtarTextureCoordinate
{
public:
    CZemtarTextureCoordinate() = default;
    CZemtarTextureCoordinate(double u, double v) : m_u(u), m_v(v) {}

    double U() const { return m_u; }
    double V() const { return m_v; }

    bool operator==(const CZemtarTextureCoordinate&) const = default;

private:
    double m_u = 0.0;
    double m_v = 0.0;
};

} // namespace Zemtar
