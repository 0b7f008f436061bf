#include "apps/viewer/NodeBounds.h"

#include "apps/geometry/ExtremePoints.h"
#include "apps/render/SceneModel.h"
#include "apps/viewer/NodeList.h"
#include "host/CZemtar3DObject.h"

#include <unordered_map>

using namespace Zemtar;

namespace {

/// Up to so many vertices each one is placed, which takes some tens of milliseconds; beyond, the corners of
/// each geometry's own box are.
constexpr qint64 MaximumVerticesPlaced = 3'000'000;

/// Up to so many vertices a node's own box is found from all of them.
constexpr qint64 MaximumVerticesBoxed = 100'000;

std::vector<Vec3> AllPoints(const CZemtarVerticiesTable& table)
{
    std::vector<Vec3> points;
    const double* place = table.Data();
    for (unsigned i = 0; i < table.Count(); ++i, place += 3) {
        points.push_back({place[0], place[1], place[2]});
    }
    return points;
}

/// Damaged vertices are left out, as they are when the node is drawn.
template <class Place>
void AddVertices(Bounds& box, const CZemtarVerticiesTable& table, const Place& place)
{
    for (unsigned i = 0; i < table.Count(); ++i) {
        const CZemtar3DVertex p = place(table.Item(i));
        if (const Vec3 point{p.X(), p.Y(), p.Z()}; IsPlace(point)) {
            box.Add(point);
        }
    }
}

} // namespace

std::optional<NodeBounds> NodeBounds::Of(const NodeList& nodes, int position)
{
    const bool exact = nodes.Subtree(position).vertices <= MaximumVerticesPlaced;
    std::unordered_map<const CZemtarVerticiesTable*, Bounds> ownBoxes;
    Bounds box;
    for (int at = position; at < nodes.End(position); ++at) {
        const auto* object = dynamic_cast<const CZemtar3DObject*>(&nodes.Node(at));
        const CZemtarVerticiesTable* table =
            object && object->Geometry() ? object->Geometry()->VerticiesTable() : nullptr;
        if (!table || table->Count() == 0) {
            continue;
        }
        const CZemtarMatrix toWorld = object->LocalToWorldMatrix(true);
        if (exact) {
            AddVertices(box, *table, [&](const CZemtar3DVertex& p) { return toWorld.TransformPoint(p); });
            continue;
        }
        const auto [own, isNew] = ownBoxes.try_emplace(table);
        if (isNew) {
            AddVertices(own->second, *table, [](const CZemtar3DVertex& p) { return p; });
        }
        box.Add(Transformed(own->second, toWorld));
    }
    if (box.IsEmpty()) {
        return std::nullopt;
    }
    return NodeBounds{box, exact};
}

std::vector<Vec3> OwnPoints(const NodeList& nodes, int position)
{
    const bool exact = nodes.Subtree(position).vertices <= MaximumVerticesBoxed;
    std::vector<Vec3> points;
    for (int at = position; at < nodes.End(position); ++at) {
        const auto* object = dynamic_cast<const CZemtar3DObject*>(&nodes.Node(at));
        const CZemtarVerticiesTable* table =
            object && object->Geometry() ? object->Geometry()->VerticiesTable() : nullptr;
        if (!table || table->Count() == 0) {
            continue;
        }
        const CZemtarMatrix toWorld = object->LocalToWorldMatrix(true);
        // The points farthest out suffice for large meshes; small ones are seen exactly.
        std::vector<Vec3> owns = exact ? AllPoints(*table) : ExtremePoints(table->Data(), table->Count());
        for (const Vec3& own : owns) {
            const CZemtar3DVertex p = toWorld.TransformPoint({own.x, own.y, own.z});
            if (const Vec3 point{p.X(), p.Y(), p.Z()}; IsPlace(point)) {
                points.push_back(point);
            }
        }
    }
    return points;
}
