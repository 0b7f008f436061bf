#include "apps/geometry/PolygonCut.h"

#include <numeric>

namespace {

/// Beyond this, cutting ears, whose time grows with the square, is not worth it.
constexpr std::size_t MostCornersForEars = 4096;

/// Gives twice the polygon's area, along its normal.
/// NOTE: Newell's method, which holds for polygons that are not quite plane.
Vec3 AreaVector(const std::vector<Vec3>& corners)
{
    Vec3 sum;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        sum = sum + Cross(corners[i] - corners[0], corners[(i + 1) % corners.size()] - corners[0]);
    }
    return sum;
}

class EarCutter
{
public:
    explicit EarCutter(const std::vector<Vec3>& corners)
        : m_corners(corners), m_normal(AreaVector(corners)), m_left(corners.size())
    {
        std::iota(m_left.begin(), m_left.end(), std::size_t{0});
    }

    void Run(const std::function<void(std::size_t, std::size_t, std::size_t)>& take)
    {
        const bool ears = m_left.size() <= MostCornersForEars;
        std::size_t at = 0;
        std::size_t refused = 0;
        while (m_left.size() >= 3) {
            const std::size_t n = m_left.size();
            const std::size_t a = m_left[(at + n - 1) % n];
            const std::size_t b = m_left[at % n];
            const std::size_t c = m_left[(at + 1) % n];
            // Where no corner is an ear the polygon crosses itself: any cut is as good as another.
            if (!ears || refused >= n || IsEar(a, b, c)) {
                take(a, b, c);
                m_left.erase(m_left.begin() + static_cast<std::ptrdiff_t>(at % n));
                at = at % n == n - 1 ? 0 : at % n;
                refused = 0;
            } else {
                at = (at + 1) % n;
                ++refused;
            }
        }
    }

private:
    double Side(std::size_t a, std::size_t b, std::size_t c) const
    {
        return Dot(Cross(m_corners[b] - m_corners[a], m_corners[c] - m_corners[a]), m_normal);
    }
    bool IsEar(std::size_t a, std::size_t b, std::size_t c) const
    {
        if (Side(a, b, c) <= 0.0) {
            return false;
        }
        return std::none_of(m_left.begin(), m_left.end(), [&](std::size_t p) {
            return p != a && p != b && p != c && Side(a, b, p) >= 0.0 && Side(b, c, p) >= 0.0 &&
                   Side(c, a, p) >= 0.0;
        });
    }

    const std::vector<Vec3>& m_corners;
    Vec3 m_normal;
    std::vector<std::size_t> m_left;
};

} // namespace

void CutPolygon(const std::vector<Vec3>& corners,
                const std::function<void(std::size_t, std::size_t, std::size_t)>& take)
{
    if (corners.size() == 3) {
        take(0, 1, 2);
    } else {
        EarCutter(corners).Run(take);
    }
}
