#pragma once

#include <QString>

#include <unordered_map>
#include <vector>

namespace Zemtar {
class CZemtarDocument;
class CZemtarSceneNode;
} // namespace Zemtar

/// What a scene node is to the user.
enum class NodeKind
{
    Assembly,
    Part,
    Group,
    Mesh,
    Polyline
};

NodeKind KindOf(const Zemtar::CZemtarSceneNode& node);
/// The kind's translated name: "Assembly".
QString KindName(NodeKind kind);

/// Numbers of one node, or summed over a subtree.
struct NodeCounts
{
    qint64 nodes = 0;
    qint64 assemblies = 0;
    qint64 parts = 0;
    qint64 meshes = 0;
    qint64 polylines = 0;
    qint64 triangles = 0;
    qint64 vertices = 0;
    qint64 segments = 0;

    static NodeCounts Of(const Zemtar::CZemtarSceneNode& node);
    NodeCounts& operator+=(const NodeCounts& other);
    NodeCounts operator-(const NodeCounts& other) const;
};

/// All nodes of a document in one list, each before its children, so that a subtree is a range. Made once,
/// in time linear in the nodes; the tree, the search and the sums read it without walking the document again.
class NodeList
{
public:
    /// Walks the document, which must outlive the list and not change its tree. Deleted nodes are left out.
    explicit NodeList(const Zemtar::CZemtarDocument& document);

    int Count() const { return static_cast<int>(m_entries.size()); }
    const Zemtar::CZemtarSceneNode& Node(int position) const { return *Entry(position).node; }
    /// Position of the node's parent; -1 for a root.
    int Parent(int position) const { return Entry(position).parent; }
    /// One past the last position of the node's subtree.
    int End(int position) const { return Entry(position).end; }
    /// Tells whether `position` is `ancestor` or below it.
    bool IsWithin(int position, int ancestor) const
    {
        return position >= ancestor && position < End(ancestor);
    }
    /// Position of a node; -1 for null or a node of another document.
    int Position(const Zemtar::CZemtarSceneNode* node) const;

    /// The node's name or, where it has none, what it is: "Unnamed mesh".
    QString DisplayName(int position) const;
    bool HasName(int position) const;
    /// Positions of the nodes whose display names, or names and values of metadata, contain the text, in any
    /// letter case; none for no text.
    std::vector<int> Find(const QString& text) const;

    /// A group, the part in it and the part's mesh often bear one name, and nothing stands beside them: such
    /// a chain of only children is one row to the user, and the part stands for it. This gives the position
    /// that stands for a node's row; most stand for themselves.
    int Row(int position) const { return m_rows[static_cast<std::size_t>(position)]; }
    /// The first and the last node of a row's chain.
    int RowTop(int position) const;
    int RowBottom(int position) const;
    /// What a click on a mesh selects: its part or, where that or something in it is selected already, the
    /// mesh.
    const Zemtar::CZemtarSceneNode* Picked(const Zemtar::CZemtarSceneNode* mesh,
                                           const Zemtar::CZemtarSceneNode* selected) const;

    NodeCounts Subtree(int position) const;
    const NodeCounts& Totals() const { return m_sums.back(); }

private:
    struct ListEntry
    {
        const Zemtar::CZemtarSceneNode* node;
        int parent;
        int end;
    };

    const ListEntry& Entry(int position) const { return m_entries[static_cast<std::size_t>(position)]; }

    void FindRows();
    bool JoinsParent(int position) const;

    std::vector<ListEntry> m_entries;
    std::vector<int> m_rows;
    std::vector<NodeCounts> m_sums; ///< of all entries before a position; one more than entries
    std::unordered_map<const Zemtar::CZemtarSceneNode*, int> m_positions;
};
