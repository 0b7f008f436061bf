#include "apps/viewer/SceneView.h"

#include "apps/render/SceneModel.h"
#include "apps/viewer/Annotations.h"
#include "apps/viewer/MeshProbe.h"
#include "apps/viewer/ViewCube.h"

#include "host/CZemtar3DObject.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QStyleHints>
#include <QTimer>

using Zemtar::CZemtarDocument;
using Zemtar::CZemtarSceneNode;

namespace {

constexpr double DegreesPerPixel = 0.4;
constexpr double DegreesPerKey = 7.5;
constexpr double ZoomPerNotch = 0.85;
constexpr double DegreesPerNotch = 120.0; ///< of the wheel, in eighths
constexpr double SliceMilliseconds = 40.0;
constexpr int RestMilliseconds = 150; ///< without input, until the full picture is drawn
// How near and how far the camera goes, in radii of the model.
constexpr double Nearest = 1e-4;
constexpr double Farthest = 100.0;

void ColorBackground(Frame& frame, const QPalette& palette)
{
    if (palette.color(QPalette::Window).lightness() < 128) {
        frame.backgroundTop = QColor(0x3b, 0x42, 0x4b);
        frame.backgroundBottom = QColor(0x1d, 0x20, 0x25);
    } else {
        frame.backgroundTop = Frame().backgroundTop;
        frame.backgroundBottom = Frame().backgroundBottom;
    }
}

} // namespace

class SceneView::State
{
public:
    SceneModel model;
    std::unique_ptr<Renderer> renderer; ///< null without OpenGL
    Frame frame;
    Annotations* notes = nullptr;
    ViewCube* cube = nullptr;
    bool measuring = false;
    QMatrix4x4 overlaid; ///< the look that the overlays show
    QTimer rest;
    bool uploadDue = true;
    bool moving = false;
    bool fullDue = true;
    bool growing = false; ///< the full picture is being drawn

    QSet<const CZemtarSceneNode*> hidden;
    const CZemtarSceneNode* isolated = nullptr;
    bool fitDue = true;
    const CZemtarSceneNode* fitNode = nullptr;

    QPointF pressed;
    QPointF last;
    Vec3 pivot;
    bool dragging = false;
    QPointF zoomPlace{-1.0, -1.0}; ///< of the cursor for which zoomPoint was found
    Vec3 zoomPoint;
};

SceneView::SceneView(QWidget* parent) : QOpenGLWidget(parent), m_state(std::make_unique<State>())
{
    setFormat(RendererFormat());
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(160, 120);
    MakeOverlays();
    m_state->rest.setSingleShot(true);
    m_state->rest.setInterval(RestMilliseconds);
    connect(&m_state->rest, &QTimer::timeout, this, [this] {
        m_state->moving = false;
        if (m_state->renderer && m_state->renderer->IsReduced()) {
            DrawFull();
        }
    });
}

void SceneView::MakeOverlays()
{
    m_state->notes = new Annotations(this, [this](const Vec3& point) { return Projected(point); });
    m_state->cube = new ViewCube(this);
    connect(m_state->cube, &ViewCube::Chosen, this, &SceneView::SetStandardView);
}

/// The overlays are painted by themselves, so they are told when the camera has moved.
void SceneView::UpdateOverlays()
{
    State& state = *m_state;
    const QMatrix4x4 look = state.frame.camera.Projection(Aspect(), state.model.Extent()) *
                            state.frame.camera.View(state.model.Extent().Center());
    if (look != state.overlaid) {
        state.overlaid = look;
        state.cube->Turn(state.frame.camera);
        state.notes->update();
    }
}

std::optional<QPointF> SceneView::Projected(const Vec3& point) const
{
    const Camera& camera = m_state->frame.camera;
    const double depth = camera.Depth(point);
    if (camera.IsPerspective() && depth <= 0.0) {
        return std::nullopt;
    }
    const double scale = height() / camera.HeightAt(depth);
    const Vec3 arm = point - camera.Eye();
    return QPointF(0.5 * width() + scale * Dot(arm, camera.Right()),
                   0.5 * height() - scale * Dot(arm, camera.Up()));
}

void SceneView::SetSection(const std::optional<SectionCut>& section)
{
    m_state->frame.section = section;
    DrawFull();
}

void SceneView::Displace(const std::vector<Vec3>& ways)
{
    State& state = *m_state;
    state.model.Displace(ways);
    if (state.renderer && !state.uploadDue) {
        makeCurrent();
        state.renderer->UpdatePlaces();
        doneCurrent();
    }
    DrawFull();
}

const SceneModel& SceneView::Model() const
{
    return m_state->model;
}

const Camera& SceneView::ViewCamera() const
{
    return m_state->frame.camera;
}

void SceneView::SetCamera(const Camera& camera)
{
    m_state->frame.camera = camera;
    m_state->fitDue = false;
    DrawFull();
}

void SceneView::SetMeasuring(bool on)
{
    m_state->measuring = on;
    setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor);
}

Annotations& SceneView::Notes()
{
    return *m_state->notes;
}

Ray SceneView::RayAt(const QPointF& point) const
{
    const Camera& camera = m_state->frame.camera;
    const double x = 2.0 * point.x() / std::max(width(), 1) - 1.0;
    const double y = 1.0 - 2.0 * point.y() / std::max(height(), 1);
    const Vec3 near = camera.PointAtDepth(x, y, Aspect(), 0.0);
    const Vec3 far = camera.PointAtDepth(x, y, Aspect(), camera.Distance());
    const double radius =
        std::max(m_state->model.Extent().IsEmpty() ? 0.0 : m_state->model.Extent().Radius(), 1e-9);
    // In parallel the model reaches behind the eye, too.
    return {camera.IsPerspective() ? near : near - 1e3 * radius * camera.Forward(), far - near};
}

double SceneView::PixelSize(const Vec3& point) const
{
    const Camera& camera = m_state->frame.camera;
    return camera.HeightAt(std::max(camera.Depth(point), 0.0)) / std::max(height(), 1);
}

QImage SceneView::Picture()
{
    m_state->cube->hide();
    QImage picture = grab().toImage();
    m_state->cube->show();
    return picture;
}

SceneView::~SceneView()
{
    ReleaseGraphics();
    if (QOpenGLContext* const last = context()) {
        // The base class destroys the context, and would call a part of the object that is no more.
        disconnect(last, &QOpenGLContext::aboutToBeDestroyed, this, &SceneView::ReleaseGraphics);
    }
}

void SceneView::ReleaseGraphics()
{
    if (m_state->renderer) {
        makeCurrent();
        m_state->renderer.reset();
        doneCurrent();
    }
}

void SceneView::SetDocument(const CZemtarDocument* document)
{
    State& state = *m_state;
    if (state.renderer) {
        makeCurrent();
        state.renderer->SetModel(nullptr);
        doneCurrent();
    }
    state.model = document ? SceneModel(*document) : SceneModel();
    state.uploadDue = true;
    state.hidden.clear();
    state.isolated = nullptr;
    state.frame.selection = {};
    Fit();
}

void SceneView::SetSelection(const CZemtarSceneNode* node)
{
    m_state->frame.selection = m_state->model.RangeOf(node);
    DrawFull();
}

void SceneView::SetHidden(const QSet<const CZemtarSceneNode*>& nodes)
{
    m_state->hidden = nodes;
    UpdateShown();
}

void SceneView::SetIsolated(const CZemtarSceneNode* node)
{
    m_state->isolated = node;
    UpdateShown();
}

void SceneView::UpdateShown()
{
    State& state = *m_state;
    if (!state.renderer || state.uploadDue) {
        return; // comes with the upload
    }
    const InstanceRange all = state.model.All();
    const InstanceRange kept = state.isolated ? state.model.RangeOf(state.isolated) : all;
    std::vector<bool> shown(all.last, false);
    std::fill(shown.begin() + kept.first, shown.begin() + kept.last, true);
    for (const CZemtarSceneNode* node : state.hidden) {
        const InstanceRange range = state.model.RangeOf(node);
        std::fill(shown.begin() + range.first, shown.begin() + range.last, false);
    }
    state.renderer->SetShown(std::move(shown));
    DrawFull();
}

void SceneView::SetEdges(bool on)
{
    m_state->frame.edges = on;
    DrawFull();
}

void SceneView::SetPerspective(bool on)
{
    m_state->frame.camera.SetPerspective(on);
    DrawFull();
}

bool SceneView::HasEdges() const
{
    return m_state->frame.edges;
}

bool SceneView::IsPerspective() const
{
    return m_state->frame.camera.IsPerspective();
}

void SceneView::SetStandardView(StandardView view)
{
    m_state->frame.camera.SetStandardView(view);
    Fit();
}

void SceneView::Fit(const CZemtarSceneNode* node)
{
    // When the picture is drawn next: the widget's size may not be known yet.
    m_state->fitDue = true;
    m_state->fitNode = node;
    DrawFull();
}

void SceneView::FitNow()
{
    State& state = *m_state;
    state.fitDue = false;
    const auto points = state.fitNode ? state.model.Outermost(state.model.RangeOf(state.fitNode))
                                      : state.renderer->ShownPoints();
    state.frame.camera.Fit(points, Aspect());
    state.zoomPlace = QPointF(-1.0, -1.0);
    UpdateOverlays();
}

const CZemtarSceneNode* SceneView::NodeAt(const QPoint& point)
{
    const std::optional<std::uint32_t> instance = InstanceAt(point);
    return instance ? m_state->model.Instances()[*instance].node : nullptr;
}

std::optional<std::uint32_t> SceneView::InstanceAt(const QPoint& point)
{
    State& state = *m_state;
    if (!state.renderer || state.uploadDue || !rect().contains(point)) {
        return std::nullopt;
    }
    makeCurrent();
    if (state.fitDue) {
        FitNow();
    }
    const auto hit = state.renderer->Pick(state.frame, (QPointF(point) * devicePixelRatioF()).toPoint());
    doneCurrent();
    return hit ? std::optional(hit->instance) : std::nullopt;
}

double SceneView::Aspect() const
{
    return static_cast<double>(std::max(width(), 1)) / std::max(height(), 1);
}

Vec3 SceneView::PointBelow(const QPointF& place)
{
    State& state = *m_state;
    // On a slow card, finding what is below the cursor may hold up the hand.
    if (state.renderer && !state.uploadDue && state.renderer->LastFullMilliseconds() < Renderer::QuickLimit) {
        makeCurrent();
        const auto hit = state.renderer->Pick(state.frame, (place * devicePixelRatioF()).toPoint());
        doneCurrent();
        if (hit) {
            return hit->point;
        }
    }
    return state.frame.camera.PointInTargetPlane(2.0 * place.x() / std::max(width(), 1) - 1.0,
                                                 1.0 - 2.0 * place.y() / std::max(height(), 1), Aspect());
}

void SceneView::ZoomAt(const QPointF& place, double factor)
{
    State& state = *m_state;
    const double radius = state.model.Extent().IsEmpty() ? 1.0 : state.model.Extent().Radius();
    const double distance = state.frame.camera.Distance() * factor;
    if ((factor < 1.0 && distance < Nearest * radius) || (factor > 1.0 && distance > Farthest * radius)) {
        return;
    }
    if (state.zoomPlace != place) {
        state.zoomPlace = place;
        state.zoomPoint = PointBelow(place);
        state.frame.camera.FocusAt(state.frame.camera.Depth(state.zoomPoint));
    }
    state.frame.camera.Zoom(factor, state.zoomPoint);
    Redraw(true);
}

void SceneView::Redraw(bool moving)
{
    if (moving) {
        m_state->moving = true;
        m_state->rest.start();
    } else {
        m_state->fullDue = true;
    }
    update();
}

void SceneView::DrawFull()
{
    Redraw(false);
}

void SceneView::Fail(const QString& message)
{
    // Not while painting: the answer may be to hide the view.
    QTimer::singleShot(0, this, [this, message] { emit Failed(message); });
}

void SceneView::initializeGL()
{
    // Moving to another window makes another context.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &SceneView::ReleaseGraphics,
            Qt::UniqueConnection);
    m_state->renderer = std::make_unique<Renderer>();
    const QString problem = m_state->renderer->Initialize();
    if (!problem.isEmpty()) {
        m_state->renderer.reset();
        Fail(problem);
    }
    m_state->uploadDue = m_state->fullDue = true;
}

void SceneView::resizeGL(int width, int /*height*/)
{
    m_state->notes->setGeometry(rect());
    m_state->cube->move(width - m_state->cube->width() - fontMetrics().height() / 2,
                        fontMetrics().height() / 2);
    m_state->zoomPlace = QPointF(-1.0, -1.0);
    m_state->fullDue = true;
}

void SceneView::paintGL()
{
    State& state = *m_state;
    if (!state.renderer) {
        const QColor color = palette().color(QPalette::Window);
        auto* functions = context()->functions();
        functions->glClearColor(static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
                                static_cast<float>(color.blueF()), 1.0F);
        functions->glClear(GL_COLOR_BUFFER_BIT);
        return;
    }
    if (state.uploadDue) {
        state.uploadDue = false;
        const QString problem = state.renderer->SetModel(&state.model);
        if (!problem.isEmpty()) {
            Fail(problem);
        }
        UpdateShown();
    }
    state.frame.size = (QSizeF(size()) * devicePixelRatioF()).toSize().expandedTo({1, 1});
    ColorBackground(state.frame, palette());
    if (state.fitDue) {
        FitNow();
    }
    if (state.moving) {
        state.growing = false;
        state.renderer->DrawQuick(state.frame);
    } else if (state.fullDue || state.growing) {
        if (state.fullDue) {
            state.renderer->StartFull(state.frame);
        }
        state.growing = !state.renderer->Continue(SliceMilliseconds);
    }
    state.fullDue = false;
    UpdateOverlays();
    state.renderer->Show(defaultFramebufferObject(), state.frame.size);
    if (state.growing) {
        update(); // input comes first, then the next slice
    }
}

bool SceneView::event(QEvent* event)
{
    if (event->type() == QEvent::Show) {
        QTimer::singleShot(0, this, [this] {
            if (isVisible() && !size().isEmpty() && !isValid()) {
                emit Failed(tr("The 3D view needs OpenGL 3.3, which this display does not offer."));
            }
        });
    }
    if (event->type() == QEvent::PaletteChange) {
        DrawFull();
    }
    if (event->type() == QEvent::NativeGesture) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            ZoomAt(gesture->position(), 1.0 / std::max(1.0 + gesture->value(), 0.1));
            return true;
        }
    }
    return QOpenGLWidget::event(event);
}

void SceneView::mousePressEvent(QMouseEvent* event)
{
    State& state = *m_state;
    state.pressed = state.last = event->position();
    state.dragging = false;
}

void SceneView::mouseMoveEvent(QMouseEvent* event)
{
    State& state = *m_state;
    const bool pans = (event->buttons() & Qt::MiddleButton) != 0 ||
                      ((event->buttons() & Qt::LeftButton) != 0 && (event->modifiers() & Qt::ShiftModifier));
    const bool orbits = !pans && (event->buttons() & Qt::LeftButton) != 0;
    if (!pans && !orbits) {
        return;
    }
    Camera& camera = state.frame.camera;
    if (!state.dragging) {
        const QPointF way = event->position() - state.pressed;
        if (way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance()) {
            return;
        }
        state.dragging = true;
        state.pivot = PointBelow(state.pressed);
        camera.FocusAt(camera.Depth(state.pivot));
    }
    const QPointF step = event->position() - state.last;
    state.last = event->position();
    if (pans) {
        camera.Pan(step.x() / std::max(height(), 1), -step.y() / std::max(height(), 1));
    } else {
        camera.Orbit(step.x() * DegreesPerPixel, -step.y() * DegreesPerPixel, state.pivot);
    }
    state.zoomPlace = QPointF(-1.0, -1.0);
    Redraw(true);
}

void SceneView::mouseReleaseEvent(QMouseEvent* event)
{
    const bool clicked = !m_state->dragging && event->button() == Qt::LeftButton;
    m_state->dragging = false;
    if (clicked && m_state->measuring) {
        emit PlaceClicked(event->position().toPoint());
    } else if (clicked) {
        emit NodePicked(NodeAt(event->position().toPoint()));
    }
}

void SceneView::mouseDoubleClickEvent(QMouseEvent* event)
{
    m_state->dragging = true; // its release is no click
    if (event->button() == Qt::LeftButton && m_state->measuring) {
        emit PlaceClicked(event->position().toPoint()); // two quick clicks are two points
    } else if (event->button() == Qt::LeftButton) {
        Fit(NodeAt(event->position().toPoint()));
    }
}

void SceneView::wheelEvent(QWheelEvent* event)
{
    const double notches = event->angleDelta().y() / DegreesPerNotch;
    ZoomAt(event->position(), std::pow(ZoomPerNotch, notches));
    event->accept();
}

void SceneView::keyPressEvent(QKeyEvent* event)
{
    Camera& camera = m_state->frame.camera;
    const Vec3 pivot = camera.Target();
    switch (event->key()) {
    case Qt::Key_Left:
        camera.Orbit(-DegreesPerKey, 0.0, pivot);
        break;
    case Qt::Key_Right:
        camera.Orbit(DegreesPerKey, 0.0, pivot);
        break;
    case Qt::Key_Up:
        camera.Orbit(0.0, -DegreesPerKey, pivot);
        break;
    case Qt::Key_Down:
        camera.Orbit(0.0, DegreesPerKey, pivot);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        ZoomAt(rect().center(), ZoomPerNotch);
        break;
    case Qt::Key_Minus:
        ZoomAt(rect().center(), 1.0 / ZoomPerNotch);
        break;
    case Qt::Key_F:
        Fit();
        return;
    default:
        QOpenGLWidget::keyPressEvent(event);
        return;
    }
    Redraw(true);
}

void SceneView::contextMenuEvent(QContextMenuEvent* event)
{
    emit MenuRequested(NodeAt(event->pos()), event->globalPos());
}
