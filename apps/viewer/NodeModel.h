#pragma once

#include "apps/viewer/NodeList.h"

#include <QAbstractItemModel>
#include <QSet>

#include <functional>

/// The node tree as item views see it: the name with the kind's icon, and an eye that tells whether the node
/// is shown. A filter leaves the given nodes and those above them. Rows cost a few bytes each and no widget;
/// 100,000 nodes are no trouble.
class NodeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column
    {
        NameColumn,
        EyeColumn,
        ColumnCount
    };

    /// The list must outlive the model.
    explicit NodeModel(const NodeList& nodes, QObject* parent = nullptr);

    /// Position in the list; -1 for an invalid index.
    static int PositionOf(const QModelIndex& index)
    {
        return index.isValid() ? static_cast<int>(index.internalId()) : -1;
    }
    const Zemtar::CZemtarSceneNode* NodeOf(const QModelIndex& index) const;
    /// Invalid when the filter leaves the node out.
    QModelIndex IndexOf(int position, int column = NameColumn) const;

    /// Leaves only these positions and what is above them; `SetFilter(nullptr)` shows all again.
    void SetFilter(const std::vector<int>* positions);
    bool IsFiltered() const { return m_filtered; }

    /// What the eyes tell: these nodes are hidden with all below them; with `isolated` all beside it is too.
    /// No row is told of, since any may have changed: the view paints itself anew.
    void SetVisibility(const QSet<const Zemtar::CZemtarSceneNode*>& hidden,
                       const Zemtar::CZemtarSceneNode* isolated);
    /// Tells whether the node is drawn, as far as hiding and isolating go.
    bool IsShown(int position) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// What dragging a row takes along; the caller owns it.
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    QStringList mimeTypes() const override { return {QStringLiteral("text/uri-list")}; }
    void SetDrag(std::function<QMimeData*()> make) { m_makeDrag = std::move(make); }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void Arrange(const std::vector<bool>& included);
    /// The row above a row; -1 at the top.
    int ParentRow(int position) const;
    QVariant NameData(int position, int role) const;
    QVariant EyeData(int position, int role) const;

    const NodeList& m_nodes;
    // The children of position p stand in m_children from m_firstChild[p + 1] to m_firstChild[p + 2]; those
    // of the invisible root, p = -1, come first.
    std::vector<int> m_firstChild;
    std::vector<int> m_children;
    std::vector<int> m_rows; ///< of each position below its parent; -1 when left out
    bool m_filtered = false;
    QSet<const Zemtar::CZemtarSceneNode*> m_hidden;
    int m_isolated = -1;
    std::function<QMimeData*()> m_makeDrag;
};
