// The templates under points and vectors: two or three components of one type, stored contiguously.
#pragma once

#include <cadex/Base_Export.hxx>

namespace cadex {
namespace internal {

/// Position in space; lengths in millimetres.
template <typename T>
class CADEX_EXPORT ModelData_BasePoint
{
public:
    using ValueType = T;
    constexpr ModelData_BasePoint() = default;
    constexpr ModelData_BasePoint(T x, T y, T z) : myX(x), myY(y), myZ(z) {}

    constexpr T X() const { return myX; }
    constexpr T Y() const { return myY; }
    constexpr T Z() const { return myZ; }
    void SetX(T x) { myX = x; }
    void SetY(T y) { myY = y; }
    void SetZ(T z) { myZ = z; }
    void SetCoord(T x, T y, T z)
    {
        myX = x;
        myY = y;
        myZ = z;
    }

    friend constexpr bool operator==(const ModelData_BasePoint&, const ModelData_BasePoint&) = default;

private:
    T myX = 0;
    T myY = 0;
    T myZ = 0;
};

/// Position in a plane, for example a texture coordinate (u, v) without unit.
template <typename T>
class CADEX_EXPORT ModelData_BasePoint2d
{
public:
    using ValueType = T;
    constexpr ModelData_BasePoint2d() = default;
    constexpr ModelData_BasePoint2d(T x, T y) : myX(x), myY(y) {}

    constexpr T X() const { return myX; }
    constexpr T Y() const { return myY; }
    void SetX(T x) { myX = x; }
    void SetY(T y) { myY = y; }

    friend constexpr bool operator==(const ModelData_BasePoint2d&, const ModelData_BasePoint2d&) = default;

private:
    T myX = 0;
    T myY = 0;
};

/// Direction or displacement in space.
template <typename T>
class CADEX_EXPORT ModelData_BaseVector
{
public:
    using ValueType = T;
    constexpr ModelData_BaseVector() = default;
    constexpr ModelData_BaseVector(T x, T y, T z) : myX(x), myY(y), myZ(z) {}

    constexpr T X() const { return myX; }
    constexpr T Y() const { return myY; }
    constexpr T Z() const { return myZ; }
    void SetX(T x) { myX = x; }
    void SetY(T y) { myY = y; }
    void SetZ(T z) { myZ = z; }

    friend constexpr bool operator==(const ModelData_BaseVector&, const ModelData_BaseVector&) = default;

private:
    T myX = 0;
    T myY = 0;
    T myZ = 0;
};

} // namespace internal
} // namespace cadex
