#include "apps/viewer/NodeBounds.h"

#include "apps/viewer/NodeList.h"
#include "host/CZemtar3DObject.h"

#include <algorithm>
#include <unordered_map>

using namespace Zemtar;

namespace {

/// Up to so many vertices each one is placed, which takes some tens of milliseconds; beyond, the corners of
/// each geometry's own box are.
constexpr qint64 MaximumVerticesPlaced = 3'000'000;

struct Box
{
    std::array<double, 3> min{1, 1, 1};
    std::array<double, 3> max{0, 0, 0};

    bool IsEmpty() const { return min[0] > max[0]; }
    void Add(const CZemtar3DVertex& point)
    {
        const std::array<double, 3> p{point.X(), point.Y(), point.Z()};
        const bool first = IsEmpty();
        for (std::size_t axis = 0; axis < 3; ++axis) {
            min[axis] = first ? p[axis] : std::min(min[axis], p[axis]);
            max[axis] = first ? p[axis] : std::max(max[axis], p[axis]);
        }
    }
};

template <class Place>
void AddVertices(Box& box, const CZemtarVerticiesTable& table, const Place& place)
{
    for (unsigned i = 0; i < table.Count(); ++i) {
        box.Add(place(table.Item(i)));
    }
}

} // namespace

std::optional<NodeBounds> NodeBounds::Of(const NodeList& nodes, int position)
{
    const bool exact = nodes.Subtree(position).vertices <= MaximumVerticesPlaced;
    std::unordered_map<const CZemtarVerticiesTable*, Box> ownBoxes;
    Box box;
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
        Box& own = ownBoxes[table];
        if (own.IsEmpty()) {
            AddVertices(own, *table, [](const CZemtar3DVertex& p) { return p; });
        }
        for (unsigned corner = 0; corner < 8; ++corner) {
            box.Add(toWorld.TransformPoint({corner & 1 ? own.max[0] : own.min[0],
                                            corner & 2 ? own.max[1] : own.min[1],
                                            corner & 4 ? own.max[2] : own.min[2]}));
        }
    }
    if (box.IsEmpty()) {
        return std::nullopt;
    }
    return NodeBounds{box.min, box.max, exact};
}
