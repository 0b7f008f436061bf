#include "sdk/brep/Crossings.h"

#include <algorithm>
#include <vector>

#include "sdk/brep/Rings.h"

namespace cadex::brep {

namespace {

struct Link
{
    gp_XY from;
    gp_XY to;
    double low = 0; ///< in u
    double high = 0;
};

std::vector<Link> LinksOf(const Body& body, const ResolvedFace& face)
{
    std::vector<Link> links;
    for (const Ring& ring : face.rings) {
        const std::vector<gp_XY> outline = OutlineOf(body, face, ring.uses);
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const gp_XY &a = outline[i], &b = outline[(i + 1) % outline.size()];
            links.push_back({a, b, std::min(a.X(), b.X()), std::max(a.X(), b.X())});
        }
    }
    std::sort(links.begin(), links.end(), [](const Link& a, const Link& b) { return a.low < b.low; });
    return links;
}

bool AreApartInV(const Link& a, const Link& b)
{
    return std::max(a.from.Y(), a.to.Y()) <= std::min(b.from.Y(), b.to.Y()) ||
           std::max(b.from.Y(), b.to.Y()) <= std::min(a.from.Y(), a.to.Y());
}

/// Each through the inside of the other; to touch is not to cross.
bool DoCross(const Link& a, const Link& b)
{
    constexpr double Margin = 1e-6;
    const gp_XY along = a.to - a.from, other = b.to - b.from;
    const double scale = Margin * along.Modulus() * other.Modulus();
    const double from = along.Crossed(b.from - a.from), to = along.Crossed(b.to - a.from);
    const double first = other.Crossed(a.from - b.from), last = other.Crossed(a.to - b.from);
    return std::min(from, to) < -scale && std::max(from, to) > scale && std::min(first, last) < -scale &&
           std::max(first, last) > scale;
}

} // namespace

bool DoRingsSeemToCross(const Body& body, const ResolvedFace& face)
{
    const std::vector<Link> links = LinksOf(body, face);
    for (std::size_t i = 0; i < links.size(); ++i) {
        for (std::size_t j = i + 1; j < links.size() && links[j].low < links[i].high; ++j) {
            if (!AreApartInV(links[i], links[j]) && DoCross(links[i], links[j])) {
                return true;
            }
        }
    }
    return false;
}

} // namespace cadex::brep
