#pragma once

#include "apps/viewer/NodeModel.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QToolButton;
class QTreeView;

/// The node tree of one document with its search field: what is typed is looked for in names and metadata
/// and the first hit selected, Enter and Shift+Enter step through the matches, and the funnel leaves only
/// them in the tree.
class NodeTree : public QWidget
{
    Q_OBJECT

public:
    /// The list must outlive the widget.
    explicit NodeTree(const NodeList& nodes, QWidget* parent = nullptr);

    NodeModel& Model() { return *m_model; }
    /// Selects a node and scrolls to it, without telling; null: selects nothing. A filter that leaves it out
    /// is taken away.
    void Select(const Zemtar::CZemtarSceneNode* node);
    /// As the model's function of that name, and shows it.
    void SetVisibility(const QSet<const Zemtar::CZemtarSceneNode*>& hidden,
                       const Zemtar::CZemtarSceneNode* isolated);
    /// Opens the node and all below it, or closes it.
    void ExpandBelow(const Zemtar::CZemtarSceneNode* node);
    void CollapseBelow(const Zemtar::CZemtarSceneNode* node);
    /// Puts the cursor into the search field.
    void BeginSearch();

signals:
    /// The user selected a node (null: none).
    void Selected(const Zemtar::CZemtarSceneNode* node);
    /// The user clicked a node's eye.
    void EyeClicked(const Zemtar::CZemtarSceneNode* node);
    void MenuRequested(const QPoint& globalPosition);
    /// The user double-clicked a node, or pressed Enter on it.
    void Activated(const Zemtar::CZemtarSceneNode* node);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void MakeView();
    QLayout* MakeSearchBar();
    void Search();
    void Step(int direction);
    void ApplyFilter();
    void ShowMatchCount();
    QModelIndex SelectedRow() const;
    int SelectedPosition() const;
    void Show(int position);

    const NodeList& m_nodes;
    NodeModel* m_model;
    QTreeView* m_view;
    QLineEdit* m_searchField;
    QToolButton* m_previous = nullptr;
    QToolButton* m_next = nullptr;
    QToolButton* m_filter = nullptr;
    QLabel* m_matchCount;
    QTimer m_searchDelay;
    std::vector<int> m_matches; ///< positions in the list, ascending
    bool m_silent = false;      ///< the selection is being set from outside
};
