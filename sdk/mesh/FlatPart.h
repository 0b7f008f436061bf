// The triangles of a placed part as bodies of flat faces with their colours: what the writers of formats of
// boundary representations put into records.
//
//     const FlatPart part(placed, placed.placement, 1e-7);
//     for (const FlatBody& body : part.bodies) { for (const PolygonBody& shell : body.shells) { ... } }
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <cadex/ModelData_Color.hxx>

#include "sdk/mesh/PlacedParts.h"
#include "sdk/mesh/PolygonBody.h"
#include "sdk/mesh/Vectors.h"

namespace cadex::mesh {

/// One solid, its cavities behind the outer shell; or one open sheet.
struct FlatBody
{
    std::vector<PolygonBody> shells;
    bool isClosed = false;
};

/// Lines and points of a part: left out here, with a report unless the caller takes care of them.
enum class OtherSets
{
    AreReported,
    AreTaken
};

struct FlatPart
{
    /// `toFile` takes the part's points to where they stand in the file and to its unit, in which
    /// `flatWithin` is given too.
    FlatPart(const PlacedPart& placed, const Affine& toFile, double flatWithin,
             OtherSets others = OtherSets::AreReported);

    /// Whether the face has another colour than its body, and which.
    bool IsColoured(const PolygonBody::Face& face) const
    {
        return face.set != bodyColour && colours[face.set].has_value();
    }
    const std::optional<ModelData_Color>& BodyColour() const { return colours[bodyColour]; }
    const Vector3& At(const PolygonBody& shell, std::uint32_t place) const
    {
        return vertices[shell.vertices[place]];
    }

    std::vector<std::optional<ModelData_Color>> colours; ///< of the faces' sets; at least one
    std::size_t bodyColour = 0; ///< none, where one set has none; else that of the first set
    std::vector<Vector3> vertices;
    std::vector<FlatBody> bodies; ///< none where all triangles are without area
};

std::optional<ModelData_Color> ColourOf(const ModelData_Appearance& appearance);

bool HasTriangles(const ModelData_Part& part);

/// The direction and the length of one use of an edge.
struct Side
{
    Vector3 direction{};
    double length = 0;
};
Side SideOf(const FlatPart& part, const PolygonBody& shell, const PolygonBody::Coedge& coedge);

} // namespace cadex::mesh
