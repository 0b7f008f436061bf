#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

/// A point or direction in double precision: three numbers and their arithmetic. Qt's vectors are single
/// precision, too coarse for a millimetre at a kilometre.
struct Vec3
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend Vec3 operator+(const Vec3& a, const Vec3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend Vec3 operator-(const Vec3& a, const Vec3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend Vec3 operator*(double s, const Vec3& v) { return {s * v.x, s * v.y, s * v.z}; }
};

inline double Dot(const Vec3& a, const Vec3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vec3 Cross(const Vec3& a, const Vec3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline double Length(const Vec3& v)
{
    return std::sqrt(Dot(v, v));
}

inline bool IsFinite(const Vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// Tells whether a model can stand there: a number, and no farther from zero than single precision bears.
/// Vertices elsewhere count as damaged.
inline bool IsPlace(const Vec3& point)
{
    constexpr double Farthest = 1e15;
    return std::abs(point.x) < Farthest && std::abs(point.y) < Farthest && std::abs(point.z) < Farthest;
}

/// A box along the axes; empty until a point is added.
struct Bounds
{
    static constexpr double Far = std::numeric_limits<double>::infinity();
    Vec3 min{Far, Far, Far};
    Vec3 max{-Far, -Far, -Far};

    bool IsEmpty() const { return !(min.x <= max.x); }
    Vec3 Center() const { return 0.5 * (min + max); }
    Vec3 Size() const { return max - min; }
    double Radius() const { return 0.5 * Length(Size()); }
    /// Gives one of the eight corners.
    Vec3 Corner(unsigned number) const
    {
        return {(number & 1U) != 0 ? max.x : min.x, (number & 2U) != 0 ? max.y : min.y,
                (number & 4U) != 0 ? max.z : min.z};
    }
    void Add(const Vec3& p)
    {
        min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
        max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
    }
    void Add(const Bounds& other)
    {
        if (!other.IsEmpty()) {
            Add(other.min);
            Add(other.max);
        }
    }
};
