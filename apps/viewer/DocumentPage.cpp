#include "apps/viewer/DocumentPage.h"

#include "apps/render/Picture.h"
#include "apps/viewer/SceneView.h"
#include "apps/viewer/ViewerSettings.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarSceneNode.h"

#include <QLabel>
#include <QStackedLayout>

using namespace Zemtar;

DocumentPage::DocumentPage(std::shared_ptr<ImportedFile> imported, QWidget* parent)
    : QWidget(parent),
      m_imported(std::move(imported)),
      m_nodes(*m_imported->document),
      m_layout(new QStackedLayout(this)),
      m_tree(new NodeTree(m_nodes))
{
    MakeTree();
    if (const QString problem = MissingOpenGL(); !problem.isEmpty()) {
        ShowViewProblem(problem);
        return;
    }
    MakeView();
    const NodeCounts& totals = m_nodes.Totals();
    if (totals.triangles == 0 && totals.segments == 0) {
        AddHint(ViewerSettings().PolyLines()
                    ? tr("The document holds no geometry.")
                    : tr("The document holds no geometry. Curves come in when polylines are switched on in\n"
                         "File > Import Options."));
    }
}

void DocumentPage::MakeView()
{
    m_view = new SceneView(this);
    m_layout->addWidget(m_view);
    const ViewerSettings settings;
    m_view->SetEdges(settings.Edges());
    m_view->SetPerspective(settings.Perspective());
    connect(m_view, &SceneView::NodePicked, this, &DocumentPage::Select);
    connect(m_view, &SceneView::MenuRequested, this,
            [this](const CZemtarSceneNode* node, const QPoint& position) {
                Select(node);
                emit MenuRequested(position);
            });
    connect(m_view, &SceneView::Failed, this, &DocumentPage::ShowViewProblem);
    m_view->SetDocument(m_imported->document.get());
}

void DocumentPage::MakeTree()
{
    connect(m_tree, &NodeTree::Selected, this, [this](const CZemtarSceneNode* node) {
        m_selected = node;
        if (m_view) {
            m_view->SetSelection(node);
        }
        emit Changed();
    });
    connect(m_tree, &NodeTree::EyeClicked, this, &DocumentPage::ToggleHidden);
    connect(m_tree, &NodeTree::Activated, this, [this](const CZemtarSceneNode* node) {
        if (m_view) {
            m_view->Fit(node);
        }
    });
    connect(m_tree, &NodeTree::MenuRequested, this, &DocumentPage::MenuRequested);
}

DocumentPage::~DocumentPage()
{
    // Both read the document, which goes before the base class destroys its children.
    delete m_tree;
    delete m_view;
}

void DocumentPage::Select(const CZemtarSceneNode* node)
{
    if (node == m_selected) {
        return;
    }
    m_selected = node;
    m_tree->Select(node);
    if (m_view) {
        m_view->SetSelection(node);
    }
    emit Changed();
}

void DocumentPage::ToggleHidden(const CZemtarSceneNode* node)
{
    if (!node) {
        return;
    }
    if (!m_hidden.remove(node)) {
        m_hidden.insert(node);
    }
    ShowVisibility();
}

void DocumentPage::Isolate(const CZemtarSceneNode* node)
{
    m_isolated = node == m_isolated ? nullptr : node;
    ShowVisibility();
    if (m_view) {
        m_view->Fit();
    }
}

void DocumentPage::ShowAll()
{
    m_hidden.clear();
    m_isolated = nullptr;
    ShowVisibility();
}

void DocumentPage::ShowVisibility()
{
    if (m_view) {
        m_view->SetHidden(m_hidden);
        m_view->SetIsolated(m_isolated);
    }
    m_tree->SetVisibility(m_hidden, m_isolated);
    emit Changed();
}

void DocumentPage::ShowViewProblem(const QString& message)
{
    auto* label = new QLabel(message, this);
    label->setObjectName(QStringLiteral("viewProblem"));
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setMargin(2 * fontMetrics().height());
    m_layout->setCurrentIndex(m_layout->addWidget(label));
}

void DocumentPage::AddHint(const QString& text)
{
    // NOTE: a child of an OpenGL widget is drawn over it.
    auto* label = new QLabel(text, this);
    label->setObjectName(QStringLiteral("hint"));
    label->setAlignment(Qt::AlignCenter);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_layout->setStackingMode(QStackedLayout::StackAll);
    m_layout->setCurrentIndex(m_layout->addWidget(label));
}
