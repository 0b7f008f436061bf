// Vectors of three numbers.
#pragma once

#include <array>
#include <cmath>

#include <cadex/ModelData_Point.hxx>

namespace cadex::mesh {

using Vector3 = std::array<double, 3>;

inline Vector3 ToVector(const ModelData_Point& point)
{
    return {point.X(), point.Y(), point.Z()};
}

inline Vector3 Minus(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline double Dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vector3 Cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double SquareLength(const Vector3& a)
{
    return Dot(a, a);
}

inline double Length(const Vector3& a)
{
    return std::sqrt(SquareLength(a));
}

} // namespace cadex::mesh
