#include "apps/render/Picture.h"

#include "apps/images/ImageFile.h"
#include "apps/render/Renderer.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QStringList>

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
                       : QCoreApplication::translate(
                             "Renderer",
                             "Pictures need OpenGL 3.3, which needs a display; there is none here.");
        }
        return {};
    }

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
};

} // namespace

Picture RenderPicture(const Zemtar::CZemtarDocument& document, const PictureOptions& options)
{
    OffscreenContext context;
    Picture picture;
    picture.problem = context.Make();
    if (!picture.problem.isEmpty()) {
        return picture;
    }
    const SceneModel model(document);
    Renderer renderer;
    picture.problem = renderer.Initialize();
    if (picture.problem.isEmpty()) {
        picture.problem = renderer.SetModel(&model);
    }
    if (!picture.problem.isEmpty()) {
        return picture;
    }
    Frame frame;
    frame.size = options.size;
    frame.edges = options.edges;
    frame.camera.SetPerspective(options.perspective);
    frame.camera.SetStandardView(options.view);
    frame.camera.Fit(renderer.ShownBoxes(), static_cast<double>(frame.size.width()) / frame.size.height());
    renderer.StartFull(frame);
    while (!renderer.Continue(Renderer::QuickLimit)) {
    }
    QOpenGLFramebufferObject target(options.size);
    renderer.Show(target.handle(), options.size);
    picture.image = target.toImage().convertToFormat(QImage::Format_RGB32);
    if (picture.image.isNull()) {
        picture.problem =
            QCoreApplication::translate("Renderer", "The graphics driver cannot draw a picture.");
    }
    return picture;
}

QString WritePicture(const Zemtar::CZemtarDocument& document, const PictureOptions& options,
                     const QString& file)
{
    const Picture picture = RenderPicture(document, options);
    if (picture.image.isNull()) {
        return picture.problem;
    }
    const QString failure = WriteImageFile(picture.image, file);
    return failure.isEmpty()
               ? QString()
               : QCoreApplication::translate("Renderer", "cannot write %1: %2").arg(file, failure);
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
