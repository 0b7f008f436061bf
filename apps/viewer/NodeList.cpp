#include "apps/viewer/NodeList.h"

#include "apps/viewer/Texts.h"
#include "host/CZemtar3DObject.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMetaData.h"

#include <QCoreApplication>

#include <algorithm>
#include <map>

using namespace Zemtar;

namespace {

template <class Table>
qint64 CountOf(const Table* table)
{
    return table ? static_cast<qint64>(table->Count()) : 0;
}

} // namespace

NodeKind KindOf(const CZemtarSceneNode& node)
{
    if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&node)) {
        const CZemtarGeometry* geometry = object->Geometry();
        return geometry && CountOf(geometry->PolyLinesTable()) != 0 ? NodeKind::Polyline : NodeKind::Mesh;
    }
    return node.IsAssembly() ? NodeKind::Assembly : node.IsPart() ? NodeKind::Part : NodeKind::Group;
}

QString KindName(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Assembly:
        return QCoreApplication::translate("NodeKind", "Assembly");
    case NodeKind::Part:
        return QCoreApplication::translate("NodeKind", "Part");
    case NodeKind::Group:
        return QCoreApplication::translate("NodeKind", "Group");
    case NodeKind::Mesh:
        return QCoreApplication::translate("NodeKind", "Mesh");
    case NodeKind::Polyline:
        return QCoreApplication::translate("NodeKind", "Polylines");
    }
    return {};
}

NodeCounts NodeCounts::Of(const CZemtarSceneNode& node)
{
    NodeCounts counts;
    counts.nodes = 1;
    const NodeKind kind = KindOf(node);
    counts.assemblies = kind == NodeKind::Assembly;
    counts.parts = kind == NodeKind::Part;
    counts.meshes = kind == NodeKind::Mesh;
    counts.polylines = kind == NodeKind::Polyline;
    if (const auto* object = dynamic_cast<const CZemtar3DObject*>(&node); object && object->Geometry()) {
        counts.triangles = CountOf(object->Geometry()->PolygonsTable());
        counts.vertices = CountOf(object->Geometry()->VerticiesTable());
        counts.segments = CountOf(object->Geometry()->PolyLinesTable());
    }
    return counts;
}

NodeCounts& NodeCounts::operator+=(const NodeCounts& other)
{
    nodes += other.nodes;
    assemblies += other.assemblies;
    parts += other.parts;
    meshes += other.meshes;
    polylines += other.polylines;
    triangles += other.triangles;
    vertices += other.vertices;
    segments += other.segments;
    return *this;
}

NodeCounts NodeCounts::operator-(const NodeCounts& other) const
{
    return {nodes - other.nodes,       assemblies - other.assemblies, parts - other.parts,
            meshes - other.meshes,     polylines - other.polylines,   triangles - other.triangles,
            vertices - other.vertices, segments - other.segments};
}

NodeList::NodeList(const CZemtarDocument& document) : m_sums(1)
{
    struct Pending
    {
        const CZemtarSceneNode* node;
        int parent;
    };
    // Trees may be of any depth, so the walk does not recurse.
    std::vector<Pending> pending;
    const auto push = [&](const std::vector<CZemtarSceneNode*>& nodes, int parent) {
        const auto first = static_cast<std::ptrdiff_t>(pending.size());
        for (const CZemtarSceneNode* node : nodes) {
            if (!node->IsDeleted()) {
                pending.push_back({node, parent});
            }
        }
        // The first is the next to be taken from the end.
        std::reverse(pending.begin() + first, pending.end());
    };
    push(document.RootNodes(), -1);
    while (!pending.empty()) {
        const Pending next = pending.back();
        pending.pop_back();
        const int position = Count();
        m_entries.push_back({next.node, next.parent, position + 1});
        m_positions.emplace(next.node, position);
        m_sums.push_back(m_sums.back());
        m_sums.back() += NodeCounts::Of(*next.node);
        push(next.node->ChildNodes(), position);
    }
    for (int position = Count() - 1; position > 0; --position) {
        if (const int parent = Parent(position); parent >= 0) {
            int& end = m_entries[static_cast<std::size_t>(parent)].end;
            end = std::max(end, End(position));
        }
    }
    FindRows();
}

bool NodeList::JoinsParent(int position) const
{
    const int parent = Parent(position);
    if (parent < 0 || parent != position - 1 || End(parent) != End(position) ||
        DisplayName(parent) != DisplayName(position)) {
        return false;
    }
    // The first row of a chain keeps the assembly that it may be; groups and meshes add nothing to a part.
    const NodeKind above = KindOf(Node(parent));
    const NodeKind kind = KindOf(Node(position));
    const bool isLeaf = kind == NodeKind::Mesh || kind == NodeKind::Polyline;
    return above == NodeKind::Group || (above == NodeKind::Part && isLeaf);
}

void NodeList::FindRows()
{
    m_rows.resize(m_entries.size());
    int top = 0;
    for (int position = 0; position < Count(); ++position) {
        const auto at = static_cast<std::size_t>(position);
        if (!JoinsParent(position)) {
            top = position;
            m_rows[at] = position;
            continue;
        }
        // The part or assembly of the chain, which comes behind the groups, stands for all of it.
        const NodeKind kind = KindOf(Node(position));
        const bool stands = kind == NodeKind::Part || kind == NodeKind::Assembly;
        m_rows[at] = stands ? position : m_rows[at - 1];
        for (int i = top; stands && i < position; ++i) {
            m_rows[static_cast<std::size_t>(i)] = position;
        }
    }
}

int NodeList::RowTop(int position) const
{
    int top = position;
    while (Parent(top) >= 0 && Row(Parent(top)) == Row(position)) {
        top = Parent(top);
    }
    return top;
}

int NodeList::RowBottom(int position) const
{
    int bottom = position;
    while (bottom + 1 < Count() && Parent(bottom + 1) == bottom && Row(bottom + 1) == Row(position)) {
        ++bottom;
    }
    return bottom;
}

const CZemtarSceneNode* NodeList::Picked(const CZemtarSceneNode* mesh, const CZemtarSceneNode* selected) const
{
    int part = Position(mesh);
    while (part >= 0 && KindOf(Node(part)) != NodeKind::Part) {
        part = Parent(part);
    }
    const int at = Position(selected);
    return part < 0 || (at >= 0 && IsWithin(at, part)) ? mesh : &Node(part);
}

int NodeList::Position(const CZemtarSceneNode* node) const
{
    const auto found = m_positions.find(node);
    return found == m_positions.end() ? -1 : found->second;
}

bool NodeList::HasName(int position) const
{
    return !Node(position).Name().IsEmpty();
}

QString NodeList::DisplayName(int position) const
{
    const CZemtarSceneNode& node = Node(position);
    if (!node.Name().IsEmpty()) {
        return Text(node.Name());
    }
    return QCoreApplication::translate("NodeKind", "Unnamed %1").arg(KindName(KindOf(node)).toLower());
}

std::vector<int> NodeList::Find(const QString& text) const
{
    std::vector<int> found;
    if (text.isEmpty()) {
        return found;
    }
    const auto holds = [&](const CZemtarString& value) {
        return Text(value).contains(text, Qt::CaseInsensitive);
    };
    const auto inMetaData = [&](const CZemtarSceneNode& node) {
        std::map<CZemtarString, CZemtarMetaData::NamedValues> categories;
        if (!node.MetaData()->IsEmpty()) {
            node.MetaData()->ListNamedValues(categories);
        }
        for (const auto& [category, values] : categories) {
            for (const auto& [name, value] : values) {
                if (holds(name) || holds(value)) {
                    return true;
                }
            }
        }
        return false;
    };
    for (int position = 0; position < Count(); ++position) {
        if (DisplayName(position).contains(text, Qt::CaseInsensitive) || inMetaData(Node(position))) {
            found.push_back(position);
        }
    }
    return found;
}

NodeCounts NodeList::Subtree(int position) const
{
    return m_sums[static_cast<std::size_t>(End(position))] - m_sums[static_cast<std::size_t>(position)];
}
