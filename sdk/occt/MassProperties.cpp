#include "sdk/occt/MassProperties.h"

#include <atomic>
#include <cmath>
#include <limits>
#include <vector>

#include <BRepGProp_Domain.hxx>
#include <BRepGProp_Face.hxx>
#include <BRepGProp_Sinert.hxx>
#include <BRepGProp_Vinert.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <OSD_Parallel.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <cadex/Base_Settings.hxx>

#include "sdk/mesh/EngineTolerances.h"
#include "sdk/occt/FacetedBRep.h"

namespace cadex::occt {

namespace {

/// Share of one face: mass (volume or area) and centre of mass times mass.
struct Share
{
    double mass = 0;
    gp_XYZ moment{0, 0, 0};
};

/// Calls `integrate(face)` for each face, on several threads when the settings allow. Empty when a face
/// failed.
template <typename Integrate>
std::vector<Share> ForEachFace(const TopoDS_Shape& shape, const Integrate& integrate)
{
    std::vector<TopoDS_Face> faces;
    for (TopExp_Explorer it(shape, TopAbs_FACE); it.More(); it.Next()) {
        faces.push_back(TopoDS::Face(it.Current()));
    }
    std::vector<Share> shares(faces.size());
    std::atomic<bool> isWhole = true;
    const auto task = [&](int i) {
        try {
            OCC_CATCH_SIGNALS
            const auto at = static_cast<std::size_t>(i);
            const GProp_GProps properties = integrate(faces[at]);
            shares[at] = {properties.Mass(), properties.CentreOfMass().XYZ() * properties.Mass()};
        } catch (const Standard_Failure&) {
            isWhole = false;
        }
    };
    const bool isSerial =
        faces.size() < 2 || !Base_Settings::Default()->BoolValue(Base_Settings::ConcurrentMode, true);
    OSD_Parallel::For(0, static_cast<int>(faces.size()), task, isSerial);
    return isWhole ? shares : std::vector<Share>();
}

/// A body: a solid, or a closed shell.
std::optional<MassProperties> MassOfBody(const TopoDS_Shape& body)
{
    // Contributions are measured from a point of the body: one far away would cost digits.
    gp_Pnt origin;
    if (const TopExp_Explorer vertex(body, TopAbs_VERTEX); vertex.More()) {
        origin = BRep_Tool::Pnt(TopoDS::Vertex(vertex.Current()));
    }
    const std::vector<Share> shares = ForEachFace(body, [&](const TopoDS_Face& face) {
        BRepGProp_Face surface(face);
        BRepGProp_Domain domain(face);
        return BRepGProp_Vinert(surface, domain, origin);
    });
    double volume = 0;
    double sum = 0;
    gp_XYZ moment(0, 0, 0);
    for (const Share& share : shares) {
        volume += share.mass;
        sum += std::abs(share.mass);
        moment += share.moment;
    }
    if (!(std::abs(volume) > tolerance::NoVolume * sum) || !std::isfinite(volume)) {
        return std::nullopt;
    }
    const gp_XYZ centre = moment / volume;
    return MassProperties{std::abs(volume), {centre.X(), centre.Y(), centre.Z()}};
}

bool HasOpenShell(const TopoDS_Shape& solid)
{
    for (TopExp_Explorer it(solid, TopAbs_SHELL); it.More(); it.Next()) {
        if (!BRep_Tool::IsClosed(it.Current())) {
            return true;
        }
    }
    return false;
}

/// False when the shape has a solid that is not closed.
bool CollectBodies(const TopoDS_Shape& shape, std::vector<TopoDS_Shape>& bodies)
{
    for (TopExp_Explorer it(shape, TopAbs_SOLID); it.More(); it.Next()) {
        if (HasOpenShell(it.Current())) {
            return false;
        }
        bodies.push_back(it.Current());
    }
    for (TopExp_Explorer it(shape, TopAbs_SHELL, TopAbs_SOLID); it.More(); it.Next()) {
        if (BRep_Tool::IsClosed(it.Current())) {
            bodies.push_back(it.Current());
        }
    }
    return true;
}

gp_XYZ ToXYZ(const ModelData_Point& point)
{
    return {point.X(), point.Y(), point.Z()};
}

/// Calls `visit(a, b, c)` for each triangle, with positions relative to the first point of the body.
template <typename Visit>
gp_XYZ ForEachTriangle(const FacetedBRep& facets, const Visit& visit)
{
    gp_XYZ origin(0, 0, 0);
    bool hasOrigin = false;
    for (const FacetGroup& group : facets.groups) {
        if (!hasOrigin && !group.points.empty()) {
            origin = ToXYZ(group.points.front());
            hasOrigin = true;
        }
        for (std::size_t i = 0; i + 2 < group.indices.size(); i += 3) {
            const auto corner = [&](std::size_t k) {
                return ToXYZ(group.points[group.indices[i + k]]) - origin;
            };
            visit(corner(0), corner(1), corner(2));
        }
    }
    return origin;
}

} // namespace

std::optional<MassProperties> ComputeMass(const TopoDS_Shape& shape)
{
    std::vector<TopoDS_Shape> bodies;
    if (!CollectBodies(shape, bodies) || bodies.empty()) {
        return std::nullopt;
    }
    double volume = 0;
    gp_XYZ moment(0, 0, 0);
    for (const TopoDS_Shape& body : bodies) {
        const std::optional<MassProperties> mass = MassOfBody(body);
        if (!mass) {
            return std::nullopt;
        }
        volume += mass->volume;
        moment += ToXYZ(mass->centroid) * mass->volume;
    }
    moment /= volume;
    return MassProperties{volume, {moment.X(), moment.Y(), moment.Z()}};
}

// NOTE: the divergence theorem on tetrahedra between the origin and each triangle; volume = sum of det / 6,
// and each tetrahedron has its centre at a quarter of the sum of its corners.
std::optional<MassProperties> ComputeMass(const FacetedBRep& facets)
{
    if (!facets.closed) {
        return std::nullopt;
    }
    double volume = 0;
    double sum = 0;
    gp_XYZ moment(0, 0, 0);
    const gp_XYZ origin = ForEachTriangle(facets, [&](const gp_XYZ& a, const gp_XYZ& b, const gp_XYZ& c) {
        const double share = a.Dot(b.Crossed(c)) / 6;
        volume += share;
        sum += std::abs(share);
        moment += (a + b + c) * (share / 4);
    });
    if (!(std::abs(volume) > tolerance::NoVolume * sum) || !std::isfinite(volume)) {
        return std::nullopt;
    }
    const gp_XYZ centre = moment / volume + origin;
    return MassProperties{std::abs(volume), {centre.X(), centre.Y(), centre.Z()}};
}

double ComputeArea(const TopoDS_Shape& shape)
{
    bool hasFaces = false;
    double area = 0;
    for (const Share& share : ForEachFace(shape, [](const TopoDS_Face& face) {
             BRepGProp_Face surface(face);
             BRepGProp_Domain domain(face);
             return BRepGProp_Sinert(surface, domain, gp_Pnt());
         })) {
        hasFaces = true;
        area += share.mass;
    }
    return hasFaces ? area : std::numeric_limits<double>::quiet_NaN();
}

double ComputeArea(const FacetedBRep& facets)
{
    double area = 0;
    ForEachTriangle(facets, [&](const gp_XYZ& a, const gp_XYZ& b, const gp_XYZ& c) {
        area += (b - a).Crossed(c - a).Modulus() / 2;
    });
    return area;
}

} // namespace cadex::occt
