#include "apps/viewer/NodeTree.h"

#include "apps/viewer/Icons.h"
#include "host/CZemtarSceneNode.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QStyle>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

using namespace Zemtar;

namespace {

/// Typing on is not held up by a search of every letter.
constexpr int SearchDelayMilliseconds = 120;
/// Beyond so many rows a filtered tree is not opened of itself.
constexpr int MaximumRowsOpened = 20000;

QToolButton* MakeButton(QWidget* parent, Glyph glyph, const QString& text)
{
    auto* button = new QToolButton(parent);
    button->setIcon(Icons::Of(glyph));
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setAutoRaise(true);
    return button;
}

} // namespace

NodeTree::NodeTree(const NodeList& nodes, QWidget* parent)
    : QWidget(parent),
      m_nodes(nodes),
      m_model(new NodeModel(nodes, this)),
      m_view(new QTreeView(this)),
      m_searchField(new QLineEdit(this)),
      m_matchCount(new QLabel(this))
{
    MakeView();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addLayout(MakeSearchBar());
    layout->addWidget(m_view, 1);
    setFocusProxy(m_view);
}

void NodeTree::MakeView()
{
    m_view->setObjectName(QStringLiteral("nodes"));
    m_view->setModel(m_model);
    m_view->setUniformRowHeights(true); // what makes large trees fast
    m_view->setHeaderHidden(true);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setExpandsOnDoubleClick(false);
    m_view->setDragDropMode(QAbstractItemView::DragOnly);
    m_view->setIndentation(m_view->indentation() * 2 / 3); // CAD trees are deep
    m_view->header()->setStretchLastSection(false);
    m_view->header()->setMinimumSectionSize(0);
    m_view->header()->setSectionResizeMode(NodeModel::NameColumn, QHeaderView::Stretch);
    m_view->header()->setSectionResizeMode(NodeModel::EyeColumn, QHeaderView::Fixed);
    const int eyeWidth = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this) +
                         4 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
    m_view->header()->resizeSection(NodeModel::EyeColumn, eyeWidth);
    m_view->expandToDepth(0);
    // Not the current row: focus that comes in gives the first row that mark without selecting it.
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (!m_silent) {
            emit Selected(m_model->NodeOf(SelectedRow()));
        }
    });
    connect(m_view, &QTreeView::clicked, this, [this](const QModelIndex& index) {
        if (index.column() == NodeModel::EyeColumn) {
            emit EyeClicked(m_model->NodeOf(index));
        } else {
            emit Selected(m_model->NodeOf(index)); // the row was selected, and a mesh of it in the view
        }
    });
    connect(m_view, &QTreeView::activated, this, [this](const QModelIndex& index) {
        if (index.column() == NodeModel::NameColumn) {
            emit Activated(m_model->NodeOf(index));
        }
    });
    connect(m_view, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& point) { emit MenuRequested(m_view->viewport()->mapToGlobal(point)); });
}

QLayout* NodeTree::MakeSearchBar()
{
    m_searchField->setObjectName(QStringLiteral("search"));
    m_searchField->setPlaceholderText(tr("Search names and metadata"));
    m_searchField->setToolTip(tr("Search names and metadata (Ctrl+F); Enter: next, Shift+Enter: previous"));
    m_searchField->setClearButtonEnabled(true);
    m_searchField->addAction(Icons::Of(Glyph::Search), QLineEdit::LeadingPosition);
    m_searchField->installEventFilter(this);
    m_previous = MakeButton(this, Glyph::Previous, tr("Previous match (Shift+Enter)"));
    m_next = MakeButton(this, Glyph::Next, tr("Next match (Enter)"));
    m_filter = MakeButton(this, Glyph::Filter, tr("Show the matches alone"));
    m_filter->setObjectName(QStringLiteral("filter"));
    m_filter->setCheckable(true);
    m_matchCount->setObjectName(QStringLiteral("matches"));
    m_searchDelay.setSingleShot(true);
    m_searchDelay.setInterval(SearchDelayMilliseconds);
    connect(&m_searchDelay, &QTimer::timeout, this, &NodeTree::Search);
    connect(m_searchField, &QLineEdit::textChanged, &m_searchDelay, qOverload<>(&QTimer::start));
    connect(m_previous, &QToolButton::clicked, this, [this] { Step(-1); });
    connect(m_next, &QToolButton::clicked, this, [this] { Step(1); });
    connect(m_filter, &QToolButton::toggled, this, &NodeTree::ApplyFilter);
    auto* bar = new QHBoxLayout;
    bar->setSpacing(1);
    bar->addWidget(m_searchField, 1);
    bar->addWidget(m_matchCount);
    for (QToolButton* button : {m_previous, m_next, m_filter}) {
        bar->addWidget(button);
    }
    ShowMatchCount();
    return bar;
}

QModelIndex NodeTree::SelectedRow() const
{
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    return rows.isEmpty() ? QModelIndex() : rows.first();
}

int NodeTree::SelectedPosition() const
{
    return NodeModel::PositionOf(SelectedRow());
}

void NodeTree::Select(const CZemtarSceneNode* node)
{
    const QScopedValueRollback silent(m_silent, true);
    const int position = m_nodes.Position(node);
    if (position < 0) {
        m_view->selectionModel()->clear();
        return;
    }
    if (!m_model->IndexOf(position).isValid()) {
        m_filter->setChecked(false);
    }
    const QModelIndex index = m_model->IndexOf(position);
    m_view->setCurrentIndex(index);
    m_view->scrollTo(index);
    ShowMatchCount();
}

void NodeTree::SetVisibility(const QSet<const CZemtarSceneNode*>& hidden, const CZemtarSceneNode* isolated)
{
    m_model->SetVisibility(hidden, isolated);
    m_view->viewport()->update();
}

void NodeTree::ExpandBelow(const CZemtarSceneNode* node)
{
    m_view->expandRecursively(m_model->IndexOf(m_nodes.Position(node)));
}

void NodeTree::CollapseBelow(const CZemtarSceneNode* node)
{
    m_view->collapse(m_model->IndexOf(m_nodes.Position(node)));
}

void NodeTree::BeginSearch()
{
    m_searchField->setFocus(Qt::ShortcutFocusReason);
    m_searchField->selectAll();
}

void NodeTree::Search()
{
    m_searchDelay.stop();
    m_matches = m_nodes.Find(m_searchField->text());
    for (int& match : m_matches) {
        match = m_nodes.Row(match);
    }
    std::sort(m_matches.begin(), m_matches.end());
    m_matches.erase(std::unique(m_matches.begin(), m_matches.end()), m_matches.end());
    if (m_filter->isChecked()) {
        ApplyFilter();
    }
    if (!m_matches.empty() && !std::binary_search(m_matches.begin(), m_matches.end(), SelectedPosition())) {
        Show(m_matches.front());
    }
    ShowMatchCount();
}

void NodeTree::Show(int position)
{
    const CZemtarSceneNode* node = &m_nodes.Node(position);
    Select(node);
    emit Selected(node);
}

void NodeTree::Step(int direction)
{
    if (m_searchDelay.isActive()) {
        const int before = SelectedPosition();
        Search();
        if (SelectedPosition() != before) {
            return; // it has gone to the first
        }
    }
    if (m_matches.empty()) {
        return;
    }
    const int current = SelectedPosition();
    auto next = direction > 0 ? std::upper_bound(m_matches.begin(), m_matches.end(), current)
                              : std::lower_bound(m_matches.begin(), m_matches.end(), current);
    if (direction > 0) {
        next = next == m_matches.end() ? m_matches.begin() : next;
    } else {
        next = std::prev(next == m_matches.begin() ? m_matches.end() : next);
    }
    Show(*next);
}

void NodeTree::ApplyFilter()
{
    const int selected = SelectedPosition();
    {
        const QScopedValueRollback silent(m_silent, true);
        const bool filtered = m_filter->isChecked() && !m_searchField->text().isEmpty();
        m_model->SetFilter(filtered ? &m_matches : nullptr);
        if (filtered && m_matches.size() <= MaximumRowsOpened) {
            m_view->expandAll();
        } else {
            m_view->expandToDepth(0);
        }
    }
    if (m_model->IndexOf(selected).isValid()) {
        Select(&m_nodes.Node(selected));
    }
}

void NodeTree::ShowMatchCount()
{
    const bool any = !m_matches.empty();
    m_previous->setEnabled(any);
    m_next->setEnabled(any);
    m_matchCount->setVisible(!m_searchField->text().isEmpty());
    const auto at = std::lower_bound(m_matches.begin(), m_matches.end(), SelectedPosition());
    if (at != m_matches.end() && *at == SelectedPosition()) {
        m_matchCount->setText(tr("%1 of %2").arg(at - m_matches.begin() + 1).arg(m_matches.size()));
    } else {
        m_matchCount->setText(any ? QString::number(m_matches.size()) : tr("none"));
    }
}

bool NodeTree::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_searchField && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            Step(key->modifiers() & Qt::ShiftModifier ? -1 : 1);
            return true;
        }
        if (key->key() == Qt::Key_Escape) {
            m_searchField->clear();
            m_view->setFocus();
            return true;
        }
        if (key->key() == Qt::Key_Down) {
            m_view->setFocus();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
