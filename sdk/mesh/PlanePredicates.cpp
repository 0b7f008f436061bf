#include "sdk/mesh/PlanePredicates.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace cadex::mesh {

namespace {

// Half the distance from 1 to the next number, and the bound of the filter's error that follows from it.
constexpr double HalfUlp = 1.1102230246251565e-16;
constexpr double FilterBound = (3 + 16 * HalfUlp) * HalfUlp;
// Splits a double into two halves of 26 bits.
constexpr double Splitter = 134217729;
constexpr double CircleTie = 1e-13;

/// A number as the unevaluated sum of its rounded value and what the rounding left over.
struct Exact
{
    double value;
    double rest;
};

Exact Sum(double a, double b)
{
    const double value = a + b;
    const double fromB = value - a;
    const double fromA = value - fromB;
    return {value, (a - fromA) + (b - fromB)};
}

Exact Difference(double a, double b)
{
    return Sum(a, -b);
}

Exact Halves(double a)
{
    const double scaled = Splitter * a;
    const double high = scaled - (scaled - a);
    return {high, a - high};
}

Exact Product(double a, double b)
{
    const double value = a * b;
    const Exact left = Halves(a);
    const Exact right = Halves(b);
    const double error =
        ((value - left.value * right.value) - left.rest * right.value) - left.value * right.rest;
    return {value, left.rest * right.rest - error};
}

/// A sum of doubles without any rounding: parts that do not overlap, the smallest first.
class Expansion
{
public:
    void Add(double term)
    {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < myCount; ++i) {
            const Exact sum = Sum(term, myParts[i]);
            term = sum.value;
            if (sum.rest != 0) {
                myParts[kept++] = sum.rest;
            }
        }
        if (term != 0 || kept == 0) {
            myParts[kept++] = term;
        }
        myCount = kept;
    }
    void Add(const Exact& terms)
    {
        Add(terms.rest);
        Add(terms.value);
    }

    /// Has the sign of the whole.
    double Largest() const { return myParts[myCount - 1]; }

private:
    std::array<double, 17> myParts{};
    std::size_t myCount = 0;
};

/// The four products of (a.value + a.rest) and (b.value + b.rest), the second factor with a sign.
void AddProduct(Expansion& sum, const Exact& a, const Exact& b, double sign)
{
    sum.Add(Product(a.rest, sign * b.rest));
    sum.Add(Product(a.rest, sign * b.value));
    sum.Add(Product(a.value, sign * b.rest));
    sum.Add(Product(a.value, sign * b.value));
}

double ExactOrientation(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c)
{
    Expansion sum;
    AddProduct(sum, Difference(a.x, c.x), Difference(b.y, c.y), 1);
    AddProduct(sum, Difference(a.y, c.y), Difference(b.x, c.x), -1);
    return sum.Largest();
}

} // namespace

double Orientation(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c)
{
    const double left = (a.x - c.x) * (b.y - c.y);
    const double right = (a.y - c.y) * (b.x - c.x);
    const double area = left - right;
    // Products of different sign, or one that is zero, cannot cancel.
    const bool isSafe = left > 0 ? right <= 0 : left < 0 ? right >= 0 : true;
    if (isSafe || std::abs(area) >= FilterBound * (std::abs(left) + std::abs(right))) {
        return area;
    }
    return ExactOrientation(a, b, c);
}

bool IsInCircle(const PlanePoint& a, const PlanePoint& b, const PlanePoint& c, const PlanePoint& d)
{
    const PlanePoint p{a.x - d.x, a.y - d.y};
    const PlanePoint q{b.x - d.x, b.y - d.y};
    const PlanePoint r{c.x - d.x, c.y - d.y};
    double sum = 0;
    double size = 0; // of what is added up: the rounding errors are fractions of it
    const auto add = [&](const PlanePoint& from, const PlanePoint& left, const PlanePoint& right) {
        const double square = from.x * from.x + from.y * from.y;
        const double first = left.x * right.y;
        const double second = right.x * left.y;
        sum += square * (first - second);
        size += square * (std::abs(first) + std::abs(second));
    };
    add(p, q, r);
    add(q, r, p);
    add(r, p, q);
    return sum > CircleTie * size;
}

} // namespace cadex::mesh
