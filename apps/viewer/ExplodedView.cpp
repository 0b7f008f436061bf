#include "apps/viewer/ExplodedView.h"

#include "apps/viewer/NodeList.h"

std::vector<Vec3> ExplodedWays(const SceneModel& model, const NodeList& nodes, double amount)
{
    std::vector<Vec3> ways(model.Instances().size());
    if (amount == 0.0) {
        return ways;
    }
    // Each node before its children, so that a child's way begins with that of its parent.
    std::vector<Vec3> wayOf(static_cast<std::size_t>(nodes.Count()));
    std::vector<Bounds> boxOf(static_cast<std::size_t>(nodes.Count()));
    std::vector<bool> isWithinPart(static_cast<std::size_t>(nodes.Count()), false);
    for (int position = 0; position < nodes.Count(); ++position) {
        const auto at = static_cast<std::size_t>(position);
        const InstanceRange range = model.RangeOf(&nodes.Node(position));
        boxOf[at] = model.Extent(range);
        const int parent = nodes.Parent(position);
        const auto above = static_cast<std::size_t>(parent);
        isWithinPart[at] =
            parent >= 0 && (isWithinPart[above] || KindOf(nodes.Node(parent)) == NodeKind::Part);
        const Bounds& around = parent < 0 ? model.Extent() : boxOf[above];
        wayOf[at] = parent < 0 ? Vec3() : wayOf[above];
        if (!isWithinPart[at] && !boxOf[at].IsEmpty()) {
            wayOf[at] = wayOf[at] + amount * (boxOf[at].Center() - around.Center());
        }
        const NodeKind kind = KindOf(nodes.Node(position));
        if ((kind == NodeKind::Mesh || kind == NodeKind::Polyline) && !range.IsEmpty()) {
            ways[range.first] = wayOf[at];
        }
    }
    return ways;
}
