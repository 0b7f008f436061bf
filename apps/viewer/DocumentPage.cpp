#include "apps/viewer/DocumentPage.h"

#include "apps/render/Picture.h"
#include "apps/viewer/Annotations.h"
#include "apps/viewer/ExplodedView.h"
#include "apps/viewer/ModelDrag.h"
#include "apps/viewer/SceneView.h"
#include "apps/viewer/ViewerSettings.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarSceneNode.h"

#include <QDir>
#include <QFileInfo>
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
    connect(m_view, &SceneView::NodePicked, this,
            [this](const CZemtarSceneNode* mesh) { Select(m_nodes.Picked(mesh, m_selected)); });
    connect(m_view, &SceneView::MenuRequested, this,
            [this](const CZemtarSceneNode* node, const QPoint& position) {
                if (!node || !m_selected ||
                    !m_nodes.IsWithin(m_nodes.Position(node), m_nodes.Position(m_selected))) {
                    Select(m_nodes.Picked(node, nullptr));
                }
                emit MenuRequested(position);
            });
    connect(m_view, &SceneView::PlaceClicked, this, &DocumentPage::MeasureAt);
    connect(m_view, &SceneView::Failed, this, &DocumentPage::ShowViewProblem);
    m_view->SetDocument(m_imported->document.get());
    m_measureTool = std::make_unique<MeasureTool>(m_view->Model());
}

void DocumentPage::SetSection(const SectionPlane& section)
{
    m_section = section;
    if (m_view) {
        m_view->SetSection(section.Through(m_view->Model().Extent()));
    }
}

void DocumentPage::SetExplosion(double amount)
{
    if (!m_view || amount == m_explosion) {
        return;
    }
    m_explosion = amount;
    m_view->Displace({}); // ways are those from the document's places
    m_view->Displace(ExplodedWays(m_view->Model(), m_nodes, amount));
    ClearMeasurements(); // whose lines lead to where the parts were
    SetSection(m_section);
}

void DocumentPage::Measure(std::optional<MeasureKind> kind)
{
    if (!m_view) {
        return;
    }
    m_measuring = kind;
    m_view->SetMeasuring(kind.has_value());
    if (kind) {
        m_measureTool->Begin(*kind);
    }
    m_view->Notes().SetHint(MeasureHint());
    emit Changed();
}

QString DocumentPage::MeasureHint() const
{
    if (!m_measuring) {
        return {};
    }
    if (!m_measureTool->Problem().isEmpty()) {
        return m_measureTool->Problem();
    }
    switch (*m_measuring) {
    case MeasureKind::Length:
        return m_measureTool->HasFirst() ? tr("Click the second point")
                                         : tr("Click the first point; Esc ends");
    case MeasureKind::Angle:
        return m_measureTool->HasFirst() ? tr("Click the second face") : tr("Click the first face; Esc ends");
    case MeasureKind::Radius:
        return tr("Click a round face; Esc ends");
    case MeasureKind::Area:
        break;
    }
    return tr("Click a face; Esc ends");
}

void DocumentPage::MeasureAt(const QPoint& place)
{
    constexpr double AttractionPixels = 9.0;
    const std::optional<std::uint32_t> instance = m_view->InstanceAt(place);
    if (!instance || !m_measuring) {
        return;
    }
    const SceneModel& model = m_view->Model();
    const Vec3 way = model.DisplacementOf(*instance);
    Ray ray = m_view->RayAt(QPointF(place) + QPointF(0.5, 0.5));
    ray.origin = ray.origin - way;
    const std::optional<SectionCut> cut = m_section.Through(model.Extent());
    const auto hit = m_measureTool->Find(*instance, ray, [&](const Vec3& point) {
        return !cut || Dot(cut->normal, point + way) >= cut->offset;
    });
    if (hit) {
        const double reach = AttractionPixels * m_view->PixelSize(hit->point + way);
        if (const auto measurement = m_measureTool->Add(*hit, reach)) {
            m_measurements.push_back(*measurement);
            ShowMeasurements();
        }
        m_view->Notes().SetHint(MeasureHint());
    }
}

void DocumentPage::ShowMeasurements()
{
    std::vector<Annotation> notes;
    for (const Measurement& measurement : m_measurements) {
        notes.push_back({measurement.points, measurement.Text()});
    }
    m_view->Notes().Set(std::move(notes));
}

void DocumentPage::ClearMeasurements()
{
    m_measurements.clear();
    if (m_view) {
        ShowMeasurements();
    }
}

/// Writes the document as it was last exported; empty when that fails.
QString DocumentPage::ExportForDrag()
{
    const FormatEntry* format = ExportFormatByName(ViewerSettings().ExportFormat());
    if (!format || !format->CanWrite()) {
        format = ExportFormatByName(QStringLiteral("GLB"));
    }
    const QString name = QFileInfo(m_imported->file).completeBaseName() + '.' + format->Extensions().first();
    const QString file = m_drags.filePath(name);
    ExportSettings settings;
    settings.format = format;
    settings.unit = ViewerSettings().ExportUnit();
    try {
        return ExportDocument(Document(), file, settings) ? file : QString();
    } catch (const std::exception& error) {
        qWarning("%s", error.what());
        return {};
    }
}

void DocumentPage::MakeTree()
{
    connect(m_tree, &NodeTree::Selected, this, [this](const CZemtarSceneNode* node) {
        if (node == m_selected) {
            return;
        }
        m_selected = node;
        if (m_view) {
            m_view->SetSelection(node);
        }
        emit Changed();
    });
    m_tree->Model().SetDrag([this] { return new ModelDrag([this] { return ExportForDrag(); }); });
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
    m_measureTool.reset();
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
