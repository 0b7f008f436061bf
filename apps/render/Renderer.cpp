#include "apps/render/Renderer.h"

#include "apps/render/AxesPainter.h"
#include "apps/render/GpuScene.h"
#include "apps/render/ModelPainter.h"
#include "apps/render/RenderTarget.h"
#include "apps/render/SelectionOutline.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QOpenGLContext>
#include <QOpenGLVersionFunctionsFactory>
#include <QVector4D>

namespace {

constexpr int Samples = 4;
constexpr int PickSide = 9;           ///< pixels around the cursor that count
constexpr double SmallestFull = 0.25; ///< pixels; what is smaller does not show
constexpr double SmallestQuick = 1.5;
constexpr int OutlineWidth = 2;              ///< pixels
constexpr double OutlineLimit = 400.0;       ///< milliseconds, of a full picture
constexpr double QuickAim = 40.0;            ///< milliseconds
constexpr std::uint64_t LeastBudget = 20000; ///< triangles

QString NoOpenGl(const QString& found)
{
    return QCoreApplication::translate("Renderer", "The 3D view needs OpenGL 3.3, and here is %1.")
        .arg(found);
}

double MillisecondsOf(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) * 1e-6;
}

} // namespace

class Renderer::Implementation
{
public:
    explicit Implementation(GpuScene::Gl& functions)
        : gl(functions),
          scene(gl),
          painter(gl),
          axes(gl),
          outline(gl),
          samples(gl, GL_RGBA8, true),
          quick(gl, GL_RGBA8, true),
          picture(gl, GL_RGBA8, false),
          numbers(gl, GL_R32UI, true)
    {
    }

    QMatrix4x4 Projection(const Frame& frame) const
    {
        const double aspect = static_cast<double>(frame.size.width()) / frame.size.height();
        return frame.camera.Projection(aspect, extent);
    }
    void BuildList(DrawList& target, const Frame& frame, const QMatrix4x4& projection, double height,
                   double smallest, std::uint64_t budget) const;
    void DrawOutline(const RenderTarget& target, const Frame& frame, int width, double milliseconds);
    void FinishPicture(const RenderTarget& source);

    GpuScene::Gl& gl;
    GpuScene scene;
    ModelPainter painter;
    AxesPainter axes;
    SelectionOutline outline;
    Frame growingFrame;
    RenderTarget samples; ///< where a full picture grows
    RenderTarget quick;
    RenderTarget picture; ///< the last complete one
    RenderTarget numbers; ///< of instances, around the cursor
    const SceneModel* model = nullptr;
    DrawList list;
    DrawList pickList;
    DrawList selectionList;
    std::vector<bool> shown; ///< as it was given
    InstanceRange listed;    ///< what selectionList shows
    Bounds extent;           ///< of what is shown
    Vec3 origin;

    double trianglesPerMillisecond = 1e5;
    double fullMilliseconds = 0.0;
    double growing = 0.0; ///< milliseconds spent on the full picture so far
    std::uint64_t quickBudget = 0;
    std::uint64_t triangles = 0;
    bool reduced = false;
};

QSurfaceFormat RendererFormat()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    return format;
}

Renderer::Renderer() = default;
Renderer::~Renderer() = default;

QString Renderer::Initialize()
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context) {
        return NoOpenGl(QCoreApplication::translate("Renderer", "none"));
    }
    const QSurfaceFormat format = context->format();
    auto* functions = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_3_3_Core>(context);
    if (context->isOpenGLES() || format.version() < qMakePair(3, 3) || !functions) {
        return NoOpenGl(QStringLiteral("%1 %2.%3")
                            .arg(context->isOpenGLES() ? "OpenGL ES" : "OpenGL")
                            .arg(format.majorVersion())
                            .arg(format.minorVersion()));
    }
    m_implementation = std::make_unique<Implementation>(*functions);
    const auto* name = reinterpret_cast<const char*>(functions->glGetString(GL_RENDERER));
    if (QByteArray(name).contains("llvmpipe") || QByteArray(name).contains("softpipe")) {
        m_implementation->trianglesPerMillisecond = 2e3;
    }
    QString problem = m_implementation->painter.Initialize();
    if (problem.isEmpty()) {
        problem = m_implementation->axes.Initialize();
    }
    if (problem.isEmpty()) {
        problem = m_implementation->outline.Initialize();
    }
    if (!problem.isEmpty()) {
        m_implementation.reset();
        return QCoreApplication::translate("Renderer", "The graphics driver refuses the 3D view: %1")
            .arg(problem);
    }
    return {};
}

QString Renderer::SetModel(const SceneModel* model)
{
    Implementation& self = *m_implementation;
    self.model = model;
    self.list = model ? DrawList(*model) : DrawList();
    self.pickList = self.selectionList = self.list;
    self.listed = {};
    self.shown.clear();
    self.extent = self.list.ShownExtent();
    self.origin = self.extent.IsEmpty() ? Vec3() : self.extent.Center();
    self.quickBudget = 0;
    self.fullMilliseconds = 0.0;
    self.scene.Release();
    QString problem = model ? self.scene.Upload(*model, self.origin) : QString();
    if (!problem.isEmpty()) {
        self.model = nullptr;
        self.list = self.pickList = self.selectionList = DrawList();
    }
    return problem;
}

void Renderer::SetShown(std::vector<bool> shown)
{
    m_implementation->pickList.SetShown(shown);
    m_implementation->shown = shown;
    m_implementation->listed = {};
    m_implementation->list.SetShown(std::move(shown));
    m_implementation->extent = m_implementation->list.ShownExtent();
}

void Renderer::UpdatePlaces()
{
    m_implementation->scene.UpdateInstances(m_implementation->origin);
    m_implementation->extent = m_implementation->list.ShownExtent();
}

std::vector<Vec3> Renderer::ShownPoints() const
{
    std::vector<Vec3> points;
    if (const SceneModel* model = m_implementation->model) {
        for (std::uint32_t i = 0; i < model->Instances().size(); ++i) {
            if (m_implementation->list.IsShown(i)) {
                model->AddOutermost(i, points);
            }
        }
    }
    return points;
}

const Bounds& Renderer::ShownExtent() const
{
    return m_implementation->extent;
}

void Renderer::Implementation::BuildList(DrawList& target, const Frame& frame, const QMatrix4x4& projection,
                                         double height, double smallest, std::uint64_t budget) const
{
    DrawRequest request;
    request.clip = projection * frame.camera.View(origin);
    request.origin = origin;
    request.eye = frame.camera.Eye();
    request.forward = frame.camera.Forward();
    const double scale = height / frame.camera.HeightAt(1.0);
    (frame.camera.IsPerspective() ? request.pixelsPerRadian : request.pixelsPerMetre) = scale;
    request.smallest = smallest;
    request.budget = budget;
    request.edges = frame.edges;
    target.Build(request);
}

void Renderer::StartFull(const Frame& frame)
{
    Implementation& self = *m_implementation;
    QElapsedTimer timer;
    timer.start();
    if (frame.edges) {
        self.scene.NeedEdges();
    }
    if (frame.section) {
        self.scene.NeedSolids();
    }
    if (frame.edges || frame.section) {
        timer.restart(); // finding them happens once and says nothing about the next picture
    }
    const QMatrix4x4 projection = self.Projection(frame);
    self.BuildList(self.list, frame, projection, frame.size.height(), SmallestFull, 0);
    self.samples.Bind(frame.size, Samples);
    self.painter.DrawBackground(frame);
    self.painter.Start(self.list, frame, self.origin, projection);
    self.growingFrame = frame;
    self.growing = MillisecondsOf(timer);
}

bool Renderer::Continue(double milliseconds)
{
    Implementation& self = *m_implementation;
    if (self.samples.Name() == 0) {
        return true;
    }
    QElapsedTimer timer;
    timer.start();
    self.samples.Bind(self.samples.Size(), Samples);
    const double budget = std::max(self.trianglesPerMillisecond * milliseconds, 1.0);
    const bool complete = self.painter.Draw(self.list, self.scene, static_cast<std::uint64_t>(budget));
    if (complete) {
        self.DrawOutline(self.samples, self.growingFrame, OutlineWidth, OutlineLimit);
        if (self.growingFrame.axes) {
            self.axes.Draw(self.growingFrame.camera.View(self.origin), self.samples.Size());
        }
    }
    self.gl.glFinish();
    const double spent = MillisecondsOf(timer);
    self.growing += spent;
    if (!complete) {
        // Only a slice that used its whole budget tells the speed.
        const double measured = budget / std::max(spent, 0.01);
        self.trianglesPerMillisecond = 0.5 * (self.trianglesPerMillisecond + measured);
        return false;
    }
    self.triangles = self.list.Triangles();
    self.fullMilliseconds = self.growing;
    self.reduced = false;
    self.FinishPicture(self.samples);
    return true;
}

void Renderer::DrawQuick(const Frame& frame)
{
    Implementation& self = *m_implementation;
    if (self.fullMilliseconds <= QuickLimit) {
        StartFull(frame);
        while (!Continue(QuickLimit)) {
        }
        return;
    }
    if (self.quickBudget == 0) {
        self.quickBudget = static_cast<std::uint64_t>(self.trianglesPerMillisecond * QuickAim);
    }
    QElapsedTimer timer;
    timer.start();
    const QMatrix4x4 projection = self.Projection(frame);
    const QSize size((frame.size.width() + 1) / 2, (frame.size.height() + 1) / 2);
    self.BuildList(self.list, frame, projection, size.height(), SmallestQuick,
                   std::max(self.quickBudget, LeastBudget));
    self.quick.Bind(size, 1);
    self.painter.DrawBackground(frame);
    self.painter.Start(self.list, frame, self.origin, projection);
    self.painter.Draw(self.list, self.scene, std::numeric_limits<std::uint32_t>::max());
    Frame half = frame;
    half.size = size;
    self.DrawOutline(self.quick, half, 1, QuickAim);
    if (frame.axes) {
        self.axes.Draw(frame.camera.View(self.origin), size);
    }
    self.gl.glFinish();
    self.FinishPicture(self.quick);
    self.reduced = true;
    self.triangles = self.list.Triangles();
    // The budget follows the time that the last picture took, in small steps.
    const double factor = std::clamp(QuickAim / std::max(MillisecondsOf(timer), 1.0), 0.6, 1.3);
    if (factor < 1.0 || self.list.IsReduced()) {
        self.quickBudget =
            std::max(LeastBudget, static_cast<std::uint64_t>(static_cast<double>(self.quickBudget) * factor));
    }
}

void Renderer::Implementation::DrawOutline(const RenderTarget& target, const Frame& frame, int width,
                                           double milliseconds)
{
    if (!model || frame.selection.IsEmpty()) {
        return;
    }
    if (listed.first != frame.selection.first || listed.last != frame.selection.last) {
        listed = frame.selection;
        std::vector<bool> flags(model->Instances().size(), false);
        for (std::uint32_t i = listed.first; i < listed.last; ++i) {
            flags[i] = i >= shown.size() || shown[i];
        }
        selectionList.SetShown(std::move(flags));
    }
    const QMatrix4x4 projection = Projection(frame);
    Frame plain = frame;
    plain.edges = false;
    // Of a selection that is too large for the time, the largest instances make the outline.
    const double budget = std::max(trianglesPerMillisecond * milliseconds, 1.0);
    BuildList(selectionList, plain, projection, frame.size.height(), SmallestFull,
              static_cast<std::uint64_t>(budget));
    painter.Start(selectionList, plain, origin, projection);
    outline.Draw(target.Name(), frame.size, frame.highlight, width,
                 [&] { painter.DrawMask(selectionList, scene); });
}

void Renderer::Implementation::FinishPicture(const RenderTarget& source)
{
    picture.Bind(source.Size(), 1);
    source.CopyTo(picture.Name(), picture.Size());
}

void Renderer::Show(unsigned framebuffer, const QSize& size)
{
    Implementation& self = *m_implementation;
    if (self.picture.Name() != 0) {
        self.picture.CopyTo(framebuffer, size);
    }
    self.gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
}

std::optional<Renderer::Hit> Renderer::Pick(const Frame& frame, const QPoint& pixel)
{
    Implementation& self = *m_implementation;
    const double width = frame.size.width();
    const double height = frame.size.height();
    const double x = 2.0 * (pixel.x() + 0.5) / width - 1.0;
    const double y = 1.0 - 2.0 * (pixel.y() + 0.5) / height;
    // The projection narrowed to the few pixels around the cursor: only what lies there is drawn.
    QMatrix4x4 narrow;
    narrow.scale(static_cast<float>(width / PickSide), static_cast<float>(height / PickSide));
    narrow.translate(static_cast<float>(-x), static_cast<float>(-y));
    const QMatrix4x4 projection = self.Projection(frame);
    const QMatrix4x4 narrowed = narrow * projection;
    Frame plain = frame;
    plain.edges = false;
    self.BuildList(self.pickList, plain, narrowed, height, SmallestFull, 0);
    if (!self.numbers.Bind({PickSide, PickSide}, 1)) {
        return std::nullopt;
    }
    const GLuint none[] = {0, 0, 0, 0};
    self.gl.glDepthMask(GL_TRUE);
    self.gl.glClearBufferuiv(GL_COLOR, 0, none);
    self.gl.glClear(GL_DEPTH_BUFFER_BIT);
    self.painter.Start(self.pickList, plain, self.origin, narrowed);
    self.painter.DrawNumbers(self.pickList, self.scene);

    GLuint numbers[PickSide * PickSide] = {};
    float depths[PickSide * PickSide] = {};
    self.gl.glReadPixels(0, 0, PickSide, PickSide, GL_RED_INTEGER, GL_UNSIGNED_INT, numbers);
    self.gl.glReadPixels(0, 0, PickSide, PickSide, GL_DEPTH_COMPONENT, GL_FLOAT, depths);
    int best = -1;
    int bestDistance = 0;
    for (int i = 0; i < PickSide * PickSide; ++i) {
        const int dx = i % PickSide - PickSide / 2;
        const int dy = i / PickSide - PickSide / 2;
        const int distance = dx * dx + dy * dy;
        if (numbers[i] != 0 && (best < 0 || distance < bestDistance)) {
            best = i;
            bestDistance = distance;
        }
    }
    if (best < 0) {
        return std::nullopt;
    }
    const QVector4D eye = projection.inverted() * QVector4D(static_cast<float>(x), static_cast<float>(y),
                                                            2.0F * depths[best] - 1.0F, 1.0F);
    const double depth = -static_cast<double>(eye.z() / eye.w());
    return Hit{numbers[best] - 1, frame.camera.PointAtDepth(x, y, width / height, depth)};
}

bool Renderer::IsReduced() const
{
    return m_implementation->reduced;
}

double Renderer::LastFullMilliseconds() const
{
    return m_implementation->fullMilliseconds;
}

std::uint64_t Renderer::GraphicsBytes() const
{
    return m_implementation->scene.Bytes();
}

std::uint64_t Renderer::Triangles() const
{
    return m_implementation->triangles;
}
