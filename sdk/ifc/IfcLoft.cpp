#include "sdk/ifc/IfcLoft.h"

#include <algorithm>
#include <cmath>

namespace cadex::ifc {
namespace {

/// Angle between the chords of a curve, in radians.
constexpr double ChordAngle = 0.15;
/// Sharper corners than this cosine of half their angle get no mitre, which would reach out too far.
constexpr double SharpestMitre = 0.15;

/// The points of the path with the directions of the chords between them.
struct Way
{
    std::vector<gp_XYZ> points;
    std::vector<gp_XYZ> directions; ///< one fewer than points; as many for a ring
    bool ring = false;
};

Way WayAlong(const Context& context, const Path& path)
{
    Way way;
    for (const gp_XYZ& point : Sampled(path, ChordAngle)) {
        if (way.points.empty() || (point - way.points.back()).Modulus() > context.precision) {
            way.points.push_back(point);
        }
    }
    way.ring =
        way.points.size() > 3 && (way.points.front() - way.points.back()).Modulus() <= context.precision;
    if (way.ring) {
        way.points.pop_back();
    }
    const std::size_t count = way.points.size();
    for (std::size_t i = 0; i + 1 < count || (way.ring && i < count); ++i) {
        way.directions.push_back(Unit(way.points[(i + 1) % count] - way.points[i], gp_XYZ(0, 0, 1)));
    }
    if (way.directions.empty()) {
        throw Unbuildable("a sweep along nothing");
    }
    return way;
}

/// The points moved along `direction` into the plane through `origin`.
Section Carried(const Section& section, const gp_XYZ& direction, const gp_XYZ& origin, const gp_XYZ& normal)
{
    Section carried = section;
    const double slope = direction.Dot(normal);
    for (std::vector<gp_XYZ>& loop : carried) {
        for (gp_XYZ& point : loop) {
            point += direction * ((origin - point).Dot(normal) / slope);
        }
    }
    return carried;
}

Section Placed(const Section& section, const Affine& frame)
{
    Section placed = section;
    for (std::vector<gp_XYZ>& loop : placed) {
        for (gp_XYZ& point : loop) {
            point = Apply(frame, point);
        }
    }
    return placed;
}

/// The section across a corner of the way.
gp_XYZ Mitre(const gp_XYZ& in, const gp_XYZ& out)
{
    const gp_XYZ normal = Unit(in + out, out);
    return normal.Dot(out) < SharpestMitre ? out : normal;
}

} // namespace

Section SectionOf(const Context& context, const Region& region)
{
    Section section{Corners(context, region.outer, ChordAngle)};
    for (const Path& hole : region.holes) {
        section.push_back(Corners(context, hole, ChordAngle));
    }
    return section;
}

Section Mixed(const Section& from, const Section& to, double share)
{
    const auto sameSize = [](const std::vector<gp_XYZ>& a, const std::vector<gp_XYZ>& b) {
        return a.size() == b.size();
    };
    if (!std::equal(from.begin(), from.end(), to.begin(), to.end(), sameSize)) {
        throw Unbuildable("sections that do not fit each other");
    }
    Section mixed = from;
    for (std::size_t loop = 0; loop < mixed.size(); ++loop) {
        for (std::size_t i = 0; i < mixed[loop].size(); ++i) {
            mixed[loop][i] += (to[loop][i] - from[loop][i]) * share;
        }
    }
    return mixed;
}

Polyhedron Loft(const std::vector<Section>& sections, bool ring)
{
    Polyhedron body;
    const std::size_t count = sections.size();
    if (count < 2) {
        throw Unbuildable("a body of one section");
    }
    std::vector<std::vector<U32>> firstOf; // of each loop of each section, its points in the body
    for (const Section& section : sections) {
        if (section.size() != sections.front().size()) {
            throw Unbuildable("sections that do not fit each other");
        }
        for (std::size_t loop = 0; loop < section.size(); ++loop) {
            if (section[loop].size() != sections.front()[loop].size()) {
                throw Unbuildable("sections that do not fit each other");
            }
            std::vector<U32>& indices = firstOf.emplace_back();
            for (const gp_XYZ& point : section[loop]) {
                indices.push_back(static_cast<U32>(body.points.size()));
                body.points.push_back(point);
            }
        }
    }
    const std::size_t loops = sections.front().size();
    for (std::size_t i = 0; i + 1 < count || (ring && i < count); ++i) {
        for (std::size_t loop = 0; loop < loops; ++loop) {
            const std::vector<U32>& from = firstOf[i * loops + loop];
            const std::vector<U32>& to = firstOf[(i + 1) % count * loops + loop];
            for (std::size_t k = 0; k < from.size(); ++k) {
                const std::size_t next = (k + 1) % from.size();
                // as triangles: the four points need not lie in one plane
                body.AddFace({from[k], from[next], to[next]});
                body.AddFace({from[k], to[next], to[k]});
            }
        }
    }
    for (std::size_t loop = 0; !ring && loop < loops; ++loop) {
        body.BeginLoop(loop == 0);
        const std::vector<U32>& floor = firstOf[loop];
        std::for_each(floor.rbegin(), floor.rend(), [&](U32 corner) { body.AddCorner(corner); });
    }
    for (std::size_t loop = 0; !ring && loop < loops; ++loop) {
        body.BeginLoop(loop == 0);
        const std::vector<U32>& roof = firstOf[(count - 1) * loops + loop];
        std::for_each(roof.begin(), roof.end(), [&](U32 corner) { body.AddCorner(corner); });
    }
    body.closed = true;
    if (body.SignedVolume(0, body.loops.size()) < 0) {
        body.Reverse();
    }
    return body;
}

Polyhedron LoftAlong(Context& context, const Path& path, const Region& region, const Affine& start,
                     const gp_XYZ* upright)
{
    const Way way = WayAlong(context, path);
    const Section profile = SectionOf(context, region);
    const std::size_t count = way.points.size();
    context.Steps(count * profile.front().size());
    std::vector<Section> sections;
    Section carried = Placed(profile, start);
    for (std::size_t i = 0; i < count; ++i) {
        const bool first = i == 0 && !way.ring;
        const bool last = i + 1 == count && !way.ring;
        const gp_XYZ& in = way.directions[first ? 0 : (i + count - 1) % count];
        const gp_XYZ& out = way.directions[last ? count - 2 : i];
        const gp_XYZ normal = Mitre(in, out);
        if (upright != nullptr) {
            const Affine frame = Frame(way.points[i], out, *upright);
            sections.push_back(Carried(Placed(profile, frame), out, way.points[i], normal));
        } else {
            carried = Carried(carried, i == 0 ? out : in, way.points[i], normal);
            sections.push_back(carried);
        }
    }
    return Loft(sections, way.ring);
}

} // namespace cadex::ifc
