#include "sdk/ifc/IfcFragments.h"

namespace cadex::ifc::flat {

namespace {

bool IsConvex(const Polygon3& polygon, const gp_XYZ& normal)
{
    const std::size_t count = polygon.size();
    for (std::size_t i = 0; i < count; ++i) {
        const gp_XYZ in = polygon[(i + 1) % count] - polygon[i];
        const gp_XYZ out = polygon[(i + 2) % count] - polygon[(i + 1) % count];
        if (in.Crossed(out).Dot(normal) <= 0 || in.Dot(out) < -0.999 * in.Modulus() * out.Modulus()) {
            return false;
        }
    }
    return count <= 8; // a turn more than once around has more corners than this
}

} // namespace

Fragments FragmentMaker::Make(const Polyhedron& body)
{
    Fragments fragments;
    for (std::size_t loop = 0; loop < body.loops.size(); loop = body.FaceEnd(loop)) {
        AddFace(body, loop, body.FaceEnd(loop), fragments);
    }
    return fragments;
}

void FragmentMaker::AddFace(const Polyhedron& body, std::size_t first, std::size_t end, Fragments& fragments)
{
    const gp_XYZ area = AreaVector(body, body.loops[first]);
    if (!(area.Modulus() > Near * Near)) {
        return;
    }
    Polygon3 outline;
    for (U32 i = 0; i < body.loops[first].count; ++i) {
        outline.push_back(body.points[body.corners[body.loops[first].first + i]]);
    }
    const gp_XYZ normal = area.Normalized();
    const Plane plane{normal, normal.Dot(outline.front())};
    bool flat = true;
    for (std::size_t loop = first; loop < end; ++loop) {
        for (U32 i = 0; i < body.loops[loop].count; ++i) {
            const gp_XYZ& p = body.points[body.corners[body.loops[loop].first + i]];
            flat = flat && std::abs(plane.Above(p)) <= Near;
        }
    }
    ++myFaces;
    if (flat && end == first + 1 && IsConvex(outline, normal)) {
        Add(std::move(outline), plane, fragments);
        return;
    }
    std::vector<U32> triangles;
    TriangulateFace(myContext, body, first, end, triangles);
    AddTriangles(body, triangles, plane, flat, fragments);
}

void FragmentMaker::AddTriangles(const Polyhedron& body, const std::vector<U32>& triangles,
                                 const Plane& plane, bool flat, Fragments& fragments)
{
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        Polygon3 triangle{body.points[triangles[i]], body.points[triangles[i + 1]],
                          body.points[triangles[i + 2]]};
        const gp_XYZ area = (triangle[1] - triangle[0]).Crossed(triangle[2] - triangle[0]);
        if (!(area.Modulus() > Near * Near)) {
            continue;
        }
        Plane own = plane;
        if (!flat) {
            // a warped face is as many faces as it has triangles
            ++myFaces;
            own.normal = area.Normalized();
            own.offset = own.normal.Dot(triangle[0]);
        }
        Add(std::move(triangle), own, fragments);
    }
}

void FragmentMaker::Add(Polygon3 points, const Plane& plane, Fragments& fragments) const
{
    Fragment& fragment = fragments.emplace_back();
    fragment.SetPoints(std::move(points));
    fragment.plane = plane;
    fragment.face = myFaces;
}

bool Split(const Polygon3& polygon, const Plane& plane, Polygon3& above, Polygon3& below)
{
    bool isAbove = false;
    bool isBelow = false;
    for (const gp_XYZ& p : polygon) {
        const double height = plane.Above(p);
        isAbove = isAbove || height > Near;
        isBelow = isBelow || height < -Near;
    }
    if (!isAbove || !isBelow) {
        return false;
    }
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const gp_XYZ& a = polygon[i];
        const gp_XYZ& b = polygon[(i + 1) % polygon.size()];
        const double da = plane.Above(a);
        const double db = plane.Above(b);
        if (da >= -Near) {
            above.push_back(a);
        }
        if (da <= Near) {
            below.push_back(a);
        }
        if ((da < -Near && db > Near) || (da > Near && db < -Near)) {
            const gp_XYZ cut = a + (b - a) * (da / (da - db));
            above.push_back(cut);
            below.push_back(cut);
        }
    }
    return true;
}

void Turn(Fragment& fragment)
{
    std::reverse(fragment.points.begin(), fragment.points.end());
    fragment.plane.normal.Reverse();
    fragment.plane.offset = -fragment.plane.offset;
}

Box BoxOf(const Fragments& fragments)
{
    Box box;
    for (const Fragment& fragment : fragments) {
        box.Add(fragment.points);
    }
    return box;
}

} // namespace cadex::ifc::flat
