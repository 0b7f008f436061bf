#include "sdk/mesh/FlatPart.h"

#include <algorithm>

#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/internal/Reports.hxx>

#include "sdk/mesh/MeshBodies.h"

namespace cadex::mesh {

std::optional<ModelData_Color> ColourOf(const ModelData_Appearance& appearance)
{
    ModelData_Color colour;
    if (appearance.IsNull() || !appearance.ToColor(colour)) {
        return std::nullopt;
    }
    return colour;
}

namespace {

bool IsSame(const std::optional<ModelData_Color>& a, const std::optional<ModelData_Color>& b)
{
    return a.has_value() == b.has_value() &&
           (!a || (a->R() == b->R() && a->G() == b->G() && a->B() == b->B()));
}

/// All triangle sets of a part in one mesh, whatever the colours: a body of two colours is still closed.
struct JoinedSets
{
    internal::TriangleSetImpl triangles;
    std::vector<std::size_t> colourOf; ///< by triangle
    std::vector<std::optional<ModelData_Color>> colours;

    JoinedSets(const PlacedPart& placed, OtherSets others)
    {
        const ModelData_PolyRepresentation shapes = placed.part.PolyRepresentation(ModelData_RM_Poly);
        for (std::size_t i = 0; !shapes.IsNull() && i < shapes.Get().Size(); ++i) {
            const ModelData_PolyVertexSet& shape = shapes.Get()[i];
            if (shape.TypeId() != ModelData_IndexedTriangleSet::GetTypeId()) {
                if (others == OtherSets::AreReported) {
                    internal::Reports::Add(internal::Report::Kind::LeftOut, "lines and points");
                }
                continue;
            }
            const auto& set = *static_cast<const internal::TriangleSetImpl*>(shape.Impl());
            Append(triangles, set.points, set.indices);
            const ModelData_Appearance own = shape.Appearance();
            Colour(ColourOf(own.IsNull() ? placed.appearance : own));
        }
    }

private:
    void Colour(const std::optional<ModelData_Color>& colour)
    {
        const auto known = std::find_if(colours.begin(), colours.end(),
                                        [&](const auto& other) { return IsSame(colour, other); });
        const auto index = static_cast<std::size_t>(known - colours.begin());
        if (known == colours.end()) {
            colours.push_back(colour);
        }
        colourOf.resize(triangles.indices.size() / 3, index);
    }
};

} // namespace

FlatPart::FlatPart(const PlacedPart& placed, const Affine& toFile, double flatWithin, OtherSets others)
{
    const JoinedSets joined(placed, others);
    const PlacedMesh solid(joined.triangles, toFile);
    for (const MeshBody& piece : FindBodies(solid)) {
        FlatBody& body = bodies.emplace_back();
        body.isClosed = piece.isClosed;
        std::vector<std::size_t> shells{piece.outer};
        shells.insert(shells.end(), piece.voids.begin(), piece.voids.end());
        for (const std::size_t shell : shells) {
            std::vector<BodyTriangle> triangles;
            const MeshTopology::Piece& part = solid.topology.pieces[shell];
            for (std::size_t i = part.first; i < part.last; ++i) {
                const U32 triangle = solid.topology.triangles[i];
                triangles.push_back({solid.Corners(triangle, piece.isTurned),
                                     joined.colourOf[solid.topology.SourceOf(joined.triangles, triangle)]});
            }
            body.shells.push_back(MergeCoplanar(triangles, solid.vertices, flatWithin));
        }
    }
    vertices = solid.vertices;
    colours = joined.colours;
    if (colours.empty()) {
        colours.emplace_back();
    }
    const auto none =
        std::find_if(colours.begin(), colours.end(), [](const auto& colour) { return !colour; });
    bodyColour = none == colours.end() ? 0 : static_cast<std::size_t>(none - colours.begin());
}

bool HasTriangles(const ModelData_Part& part)
{
    const ModelData_PolyRepresentation shapes = part.PolyRepresentation(ModelData_RM_Poly);
    for (std::size_t i = 0; !shapes.IsNull() && i < shapes.Get().Size(); ++i) {
        if (shapes.Get()[i].TypeId() == ModelData_IndexedTriangleSet::GetTypeId()) {
            return true;
        }
    }
    return false;
}

Side SideOf(const FlatPart& part, const PolygonBody& shell, const PolygonBody::Coedge& coedge)
{
    const Vector3 along = Minus(part.At(shell, coedge.to), part.At(shell, coedge.from));
    const double length = Length(along);
    return {{along[0] / length, along[1] / length, along[2] / length}, length};
}

} // namespace cadex::mesh
