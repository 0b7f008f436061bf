#include "apps/viewer/NodeModel.h"

#include "apps/viewer/Icons.h"
#include "host/CZemtarSceneNode.h"

#include <QFont>
#include <QGuiApplication>
#include <QPalette>

#include <numeric>

using namespace Zemtar;

namespace {

Glyph GlyphOf(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Assembly:
        return Glyph::Assembly;
    case NodeKind::Part:
        return Glyph::Part;
    case NodeKind::Group:
        return Glyph::Group;
    case NodeKind::Mesh:
        return Glyph::Mesh;
    case NodeKind::Polyline:
        return Glyph::Polyline;
    }
    return Glyph::Group;
}

std::size_t At(int position)
{
    return static_cast<std::size_t>(position);
}

} // namespace

NodeModel::NodeModel(const NodeList& nodes, QObject* parent) : QAbstractItemModel(parent), m_nodes(nodes)
{
    Arrange(std::vector<bool>(At(nodes.Count()), true));
}

void NodeModel::Arrange(const std::vector<bool>& included)
{
    const int count = m_nodes.Count();
    m_firstChild.assign(At(count + 2), 0);
    m_rows.assign(At(count), -1);
    const auto isRow = [&](int position) {
        return included[At(position)] && m_nodes.Row(position) == position;
    };
    for (int position = 0; position < count; ++position) {
        if (isRow(position)) {
            m_rows[At(position)] = m_firstChild[At(ParentRow(position) + 2)]++;
        }
    }
    std::partial_sum(m_firstChild.begin(), m_firstChild.end(), m_firstChild.begin());
    m_children.assign(At(m_firstChild.back()), 0);
    for (int position = 0; position < count; ++position) {
        if (isRow(position)) {
            m_children[At(m_firstChild[At(ParentRow(position) + 1)] + m_rows[At(position)])] = position;
        }
    }
}

int NodeModel::ParentRow(int position) const
{
    const int parent = m_nodes.Parent(m_nodes.RowTop(position));
    return parent < 0 ? -1 : m_nodes.Row(parent);
}

const CZemtarSceneNode* NodeModel::NodeOf(const QModelIndex& index) const
{
    return index.isValid() ? &m_nodes.Node(PositionOf(index)) : nullptr;
}

QModelIndex NodeModel::IndexOf(int position, int column) const
{
    const int row = position < 0 ? -1 : m_nodes.Row(position);
    if (row < 0 || m_rows[At(row)] < 0) {
        return {};
    }
    return createIndex(m_rows[At(row)], column, static_cast<quintptr>(row));
}

void NodeModel::SetFilter(const std::vector<int>* positions)
{
    beginResetModel();
    m_filtered = positions != nullptr;
    std::vector<bool> included(At(m_nodes.Count()), !m_filtered);
    if (positions) {
        for (int position : *positions) {
            for (position = m_nodes.Row(position); position >= 0 && !included[At(position)];
                 position = ParentRow(position)) {
                included[At(position)] = true;
            }
        }
    }
    Arrange(included);
    endResetModel();
}

void NodeModel::SetVisibility(const QSet<const CZemtarSceneNode*>& hidden, const CZemtarSceneNode* isolated)
{
    m_hidden = hidden;
    m_isolated = m_nodes.Position(isolated);
}

bool NodeModel::IsShown(int position) const
{
    if (m_isolated >= 0 && !m_nodes.IsWithin(position, m_isolated) &&
        !m_nodes.IsWithin(m_isolated, position)) {
        return false;
    }
    position = m_nodes.Row(position) == position ? m_nodes.RowBottom(position) : position;
    for (; position >= 0 && !m_hidden.isEmpty(); position = m_nodes.Parent(position)) {
        if (m_hidden.contains(&m_nodes.Node(position))) {
            return false;
        }
    }
    return true;
}

QModelIndex NodeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || row >= rowCount(parent) || column < 0 || column >= ColumnCount) {
        return {};
    }
    const int child = m_children[At(m_firstChild[At(PositionOf(parent) + 1)] + row)];
    return createIndex(row, column, static_cast<quintptr>(child));
}

QModelIndex NodeModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? IndexOf(ParentRow(PositionOf(index))) : QModelIndex();
}

int NodeModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() && parent.column() != NameColumn) {
        return 0;
    }
    const std::size_t slot = At(PositionOf(parent) + 1);
    return m_firstChild[slot + 1] - m_firstChild[slot];
}

int NodeModel::columnCount(const QModelIndex& /*parent*/) const
{
    return ColumnCount;
}

QVariant NodeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) {
        return {};
    }
    return index.column() == NameColumn ? NameData(PositionOf(index), role)
                                        : EyeData(PositionOf(index), role);
}

QVariant NodeModel::NameData(int position, int role) const
{
    const NodeKind kind = KindOf(m_nodes.Node(position));
    switch (role) {
    case Qt::DisplayRole:
        return m_nodes.DisplayName(position);
    case Qt::DecorationRole:
        return Icons::Of(GlyphOf(kind));
    case Qt::ToolTipRole:
        return QStringLiteral("%1 (%2)").arg(m_nodes.DisplayName(position), KindName(kind));
    case Qt::FontRole:
        if (!m_nodes.HasName(position)) {
            QFont font = QGuiApplication::font();
            font.setItalic(true);
            return font;
        }
        return {};
    case Qt::ForegroundRole:
        if (!IsShown(position)) {
            return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
        }
        return {};
    default:
        return {};
    }
}

QVariant NodeModel::EyeData(int position, int role) const
{
    const bool shown = IsShown(position);
    switch (role) {
    case Qt::DecorationRole:
        return Icons::Of(shown ? Glyph::Eye : Glyph::EyeOff);
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
        return shown ? tr("Shown; click to hide") : tr("Hidden; click to show");
    default:
        return {};
    }
}

Qt::ItemFlags NodeModel::flags(const QModelIndex& index) const
{
    return QAbstractItemModel::flags(index) | (m_makeDrag ? Qt::ItemIsDragEnabled : Qt::NoItemFlags);
}

QMimeData* NodeModel::mimeData(const QModelIndexList& /*indexes*/) const
{
    return m_makeDrag ? m_makeDrag() : nullptr;
}

QVariant NodeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section == NameColumn) {
        return tr("Name");
    }
    return {};
}
