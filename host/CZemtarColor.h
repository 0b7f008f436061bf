#pragma once

#include "host/ZemtarCoreExport.h"

namespace Zemtar {

/// A colour: red, green, blue and alpha as doubles, nominally 0 to 1, alpha 1 opaque. Values outside are kept
/// as they stand. Opaque black by default.
class ZEMTAR_CORE_EXPORT CZemtarColor
{
public:
    CZemtarColor() = default;
    CZemtarColor(double r, double g, double b, double a) : m_r(r), m_g(g), m_b(b), m_a(a) {}

    double R() const { return m_r; }
    double G() const { return m_g; }
    double B() const { return m_b; }
    double A() const { return m_a; }
    void SetRGBA(double r, double g, double b, double a) { *this = CZemtarColor(r, g, b, a); }

    bool operator==(const CZemtarColor&) const = default;

private:
    double m_r = 0.0;
    double m_g = 0.0;
    double m_b = 0.0;
    double m_a = 1.0;
};

} // namespace Zemtar
