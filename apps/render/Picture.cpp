#include "apps/render/Picture.h"

#include "apps/images/ImageFile.h"
#include "apps/render/Renderer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QStringList>

#include <cmath>
#include <memory>

namespace {

constexpr int LargestSide = 8192;

/// An OpenGL context without a window, current from `Make` on.
class OffscreenContext
{
public:
    ~OffscreenContext() { m_context.doneCurrent(); }

    /// Gives an empty text, or why there is none, for the user.
    QString Make()
    {
        m_context.setFormat(RendererFormat());
        m_surface.setFormat(RendererFormat());
        const bool made = m_context.create();
        if (made) {
            m_surface.setFormat(m_context.format());
            m_surface.create();
        }
        if (!made || !m_surface.isValid() || !m_context.makeCurrent(&m_surface)) {
            return HasDisplay()
                       ? QCoreApplication::translate(
                             "Renderer", "Pictures need OpenGL 3.3, which this display does not offer.")
                       : QCoreApplication::translate("Renderer", "Pictures need OpenGL 3.3, which needs a "
                                                                 "display; there is none here, nor Xvfb.");
        }
        return {};
    }

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
};

/// A document made ready for pictures from several sides.
class PictureMaker
{
public:
    /// Gives an empty text, or what is missing.
    QString Prepare(const Zemtar::CZemtarDocument& document, const PictureOptions& options)
    {
        QString problem = m_context.Make();
        if (problem.isEmpty()) {
            m_model = SceneModel(document);
            m_renderer = std::make_unique<Renderer>();
            problem = m_renderer->Initialize();
        }
        if (problem.isEmpty()) {
            problem = m_renderer->SetModel(&m_model);
        }
        m_frame.size = options.size;
        m_frame.edges = options.edges;
        m_frame.axes = options.axes;
        m_frame.camera.SetPerspective(options.perspective);
        m_frame.camera.SetStandardView(options.view);
        return problem;
    }

    std::vector<Vec3> Points() const { return m_renderer->ShownPoints(); }
    Camera& Look() { return m_frame.camera; }
    void Fit(const std::vector<Vec3>& points)
    {
        m_frame.camera.Fit(points, static_cast<double>(m_frame.size.width()) / m_frame.size.height());
    }

    Picture Draw()
    {
        m_renderer->StartFull(m_frame);
        while (!m_renderer->Continue(Renderer::QuickLimit)) {
        }
        QOpenGLFramebufferObject target(m_frame.size);
        m_renderer->Show(target.handle(), m_frame.size);
        Picture picture{target.toImage().convertToFormat(QImage::Format_RGB32), {}};
        if (picture.image.isNull()) {
            picture.problem =
                QCoreApplication::translate("Renderer", "The graphics driver cannot draw a picture.");
        }
        return picture;
    }

private:
    OffscreenContext m_context; // outlives what is made in it
    SceneModel m_model;
    std::unique_ptr<Renderer> m_renderer;
    Frame m_frame;
};

QString WriteTo(const Picture& picture, const QString& file)
{
    if (picture.image.isNull()) {
        return picture.problem;
    }
    const QString failure = WriteImageFile(picture.image, file);
    return failure.isEmpty()
               ? QString()
               : QCoreApplication::translate("Renderer", "cannot write %1: %2").arg(file, failure);
}

/// The points as they come round, so that every frame has room for them.
std::vector<Vec3> TurnedAround(const std::vector<Vec3>& points, const Vec3& center, int frames)
{
    std::vector<Vec3> turned;
    for (int frame = 0; frame < frames; ++frame) {
        const double angle = 2.0 * M_PI * frame / frames;
        for (const Vec3& point : points) {
            const Vec3 arm = point - center;
            turned.push_back(center + Vec3{std::cos(angle) * arm.x - std::sin(angle) * arm.y,
                                           std::sin(angle) * arm.x + std::cos(angle) * arm.y, arm.z});
        }
    }
    return turned;
}

} // namespace

Picture RenderPicture(const Zemtar::CZemtarDocument& document, const PictureOptions& options)
{
    PictureMaker maker;
    if (const QString problem = maker.Prepare(document, options); !problem.isEmpty()) {
        return {{}, problem};
    }
    maker.Fit(maker.Points());
    return maker.Draw();
}

QString WritePicture(const Zemtar::CZemtarDocument& document, const PictureOptions& options,
                     const QString& file)
{
    return WriteTo(RenderPicture(document, options), file);
}

QString WriteTurntable(const Zemtar::CZemtarDocument& document, const PictureOptions& options, int frames,
                       const QString& file)
{
    PictureMaker maker;
    QString problem = maker.Prepare(document, options);
    if (!problem.isEmpty()) {
        return problem;
    }
    const std::vector<Vec3> points = maker.Points();
    Bounds box;
    for (const Vec3& point : points) {
        box.Add(point);
    }
    constexpr int MostTurns = 36; // between them nothing reaches much farther
    const Vec3 center = box.IsEmpty() ? Vec3() : box.Center();
    maker.Fit(TurnedAround(points, center, std::min(frames, MostTurns)));
    const QFileInfo info(file);
    const int digits = std::max(3, static_cast<int>(QString::number(frames).size()));
    QStringList written;
    for (int frame = 1; frame <= frames && problem.isEmpty(); ++frame) {
        const QString name = info.dir().filePath(QStringLiteral("%1-%2.%3")
                                                     .arg(info.completeBaseName())
                                                     .arg(frame, digits, 10, QLatin1Char('0'))
                                                     .arg(info.suffix()));
        problem = WriteTo(maker.Draw(), name);
        if (problem.isEmpty()) {
            written << name;
        }
        maker.Look().Orbit(360.0 / frames, 0.0, center);
    }
    for (int i = 0; !problem.isEmpty() && i < written.size(); ++i) {
        QFile::remove(written[i]);
    }
    return problem;
}

QString MissingOpenGL()
{
    static const QString problem = OffscreenContext().Make();
    return problem;
}

bool ParsePictureSize(const QString& text, QSize& size)
{
    const QStringList parts = text.toLower().split('x');
    bool isWidth = false;
    bool isHeight = false;
    const int width = parts.value(0).toInt(&isWidth);
    const int height = parts.value(1).toInt(&isHeight);
    if (parts.size() != 2 || !isWidth || !isHeight || width < 1 || height < 1 || width > LargestSide ||
        height > LargestSide) {
        return false;
    }
    size = QSize(width, height);
    return true;
}

bool HasDisplay()
{
    return QGuiApplication::platformName() != QLatin1String("offscreen") &&
           QGuiApplication::platformName() != QLatin1String("minimal");
}
