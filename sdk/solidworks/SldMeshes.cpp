#include "sdk/solidworks/SldMeshes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <unordered_map>

#include <cadex/internal/Progress.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/mesh/TriangleAssembly.h"
#include "sdk/occt/PolySets.h"
#include "sdk/solidworks/SldBytes.h"

namespace cadex::solidworks {

namespace {

constexpr double MillimetresPerMetre = 1000;
constexpr std::size_t PointSize = 12;
/// Farther than anything that can be modelled; what lies beyond comes from damage.
constexpr float Farthest = 1e6F;

using Place = std::array<float, 3>;

Place PlaceAt(std::string_view items, std::size_t index)
{
    Place place;
    std::memcpy(place.data(), items.data() + index * PointSize, PointSize);
    for (float& value : place) {
        value += 0.0F; // one zero
    }
    return place;
}

struct PlaceHash
{
    std::size_t operator()(const Place& place) const
    {
        std::uint64_t hash = 0;
        for (const float value : place) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            hash = (hash ^ bits) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }
};

/// Numbers the places of a body, so that its faces share them.
using Numbers = std::unordered_map<Place, U32, PlaceHash>;

bool IsSound(const Place& place)
{
    return std::abs(place[0]) <= Farthest && std::abs(place[1]) <= Farthest && std::abs(place[2]) <= Farthest;
}

ModelData_Vectorf NormalAt(std::string_view normals, std::size_t index)
{
    const Place n = PlaceAt(normals, index);
    const float length = std::hypot(n[0], n[1], n[2]);
    return length > 0.1F && length < 10 ? ModelData_Vectorf(n[0] / length, n[1] / length, n[2] / length)
                                        : ModelData_Vectorf(0, 0, 0);
}

/// False when a point is nowhere.
bool SetPoints(const DisplayFace& face, Numbers& numbers, mesh::FaceTriangles& result)
{
    const std::size_t count = face.points.size() / PointSize;
    result.points.reserve(count);
    result.shared.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const Place place = PlaceAt(face.points, i);
        if (!IsSound(place)) {
            return false;
        }
        result.points.emplace_back(place[0] * MillimetresPerMetre, place[1] * MillimetresPerMetre,
                                   place[2] * MillimetresPerMetre);
        result.shared.push_back(numbers.try_emplace(place, static_cast<U32>(numbers.size())).first->second);
    }
    return true;
}

/// Each strip goes on with a triangle a point, every other one turned.
template <typename Take>
void ForEachTriangle(const DisplayFace& face, const Take& take)
{
    std::size_t first = 0;
    for (std::size_t at = 0; at < face.strips.size(); at += 4) {
        const std::size_t length = ValueAt<std::uint32_t>(face.strips, at);
        for (std::size_t i = 0; i + 2 < length; ++i) {
            const int corner = static_cast<int>(first + i);
            take(i % 2 == 0 ? mesh::NodeTriangle{corner, corner + 1, corner + 2}
                            : mesh::NodeTriangle{corner + 1, corner, corner + 2});
        }
        first += length;
    }
}

/// Where there are none, triangles take their own.
void SetNormals(const DisplayFace& face, mesh::FaceTriangles& result)
{
    if (face.normals.empty()) {
        result.normals.assign(1, ModelData_Vectorf(0, 0, 0));
        return;
    }
    const std::size_t count = face.normals.size() / PointSize;
    result.normals.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        result.normals.push_back(NormalAt(face.normals, i));
    }
}

void AddBody(const DisplayBody& body, const ModelData_Appearance& look, internal::AppearanceCache& looks,
             ModelData_PolyRepresentation& result)
{
    occt::SetLabels groups(look);
    std::vector<std::vector<const DisplayFace*>> facesOf(1);
    for (const DisplayFace& face : body.faces) {
        const std::size_t group = face.look ? groups.NumberOf(looks.Of(face.look->colour)) : 0;
        facesOf.resize(groups.All().size());
        facesOf[group].push_back(&face);
    }
    mesh::TriangleAssembly assembly(facesOf.size());
    Numbers numbers;
    mesh::FaceTriangles triangles;
    for (std::size_t group = 0; group < facesOf.size(); ++group) {
        for (const DisplayFace* face : facesOf[group]) {
            if (!internal::Progress::GoesOn()) {
                return;
            }
            triangles.Clear();
            if (!SetPoints(*face, numbers, triangles)) {
                internal::Reports::Add(internal::Report::Kind::LeftOut,
                                       "a displayed face with a point that is nowhere");
                continue;
            }
            ForEachTriangle(
                *face, [&](const mesh::NodeTriangle& triangle) { triangles.triangles.push_back(triangle); });
            SetNormals(*face, triangles);
            assembly.Add(group, triangles);
        }
    }
    occt::AddTriangleSets(assembly.Take(), groups.All(), body.name, result);
}

} // namespace

ModelData_PolyRepresentation MeshesOf(const std::vector<DisplayBody>& bodies,
                                      const std::optional<DisplayLook>& look,
                                      internal::AppearanceCache& looks)
{
    ModelData_PolyRepresentation result{initialized()};
    for (const DisplayBody& body : bodies) {
        const std::optional<DisplayLook>& own = body.look ? body.look : look;
        AddBody(body, own ? looks.Of(own->colour) : ModelData_Appearance(), looks, result);
    }
    return occt::NullIfEmpty(result);
}

double AreaOf(const std::vector<DisplayBody>& bodies)
{
    double sum = 0;
    for (const DisplayBody& body : bodies) {
        for (const DisplayFace& face : body.faces) {
            ForEachTriangle(face, [&](const mesh::NodeTriangle& triangle) {
                double corner[3][3];
                for (std::size_t i = 0; i < 3; ++i) {
                    const Place place = PlaceAt(face.points, static_cast<std::size_t>(triangle[i]));
                    std::copy(place.begin(), place.end(), corner[i]);
                }
                const auto side = [&](std::size_t to, std::size_t axis) {
                    return corner[to][axis] - corner[0][axis];
                };
                const auto part = [&](std::size_t a, std::size_t b) {
                    return side(1, a) * side(2, b) - side(1, b) * side(2, a);
                };
                sum += std::hypot(part(1, 2), part(2, 0), part(0, 1)) / 2;
            });
        }
    }
    return sum * MillimetresPerMetre * MillimetresPerMetre;
}

} // namespace cadex::solidworks
