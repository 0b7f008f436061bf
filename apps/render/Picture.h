#pragma once

#include "apps/render/Camera.h"
#include "apps/shared/Display.h"

#include <QImage>
#include <QSize>
#include <QString>

namespace Zemtar {
class CZemtarDocument;
}

/// How a picture without a window is made.
struct PictureOptions
{
    StandardView view = StandardView::Iso;
    QSize size{800, 600};
    bool perspective = true;
    bool edges = true;
    bool axes = true; ///< small axes in the lower left corner
};

/// A picture, or why there is none: then `image` is null and `problem` a message for the user.
struct Picture
{
    QImage image;
    QString problem;
};

/// Draws a document into a picture, fitted into view. Needs a QGuiApplication, and OpenGL 3.3; where that is
/// missing the problem says so. A document without geometry gives the empty background.
///
///     UseDisplayIfAny();
///     const QGuiApplication application(argc, argv);
///     const Picture picture = RenderPicture(*document, {.view = StandardView::Front});
///     if (picture.image.isNull()) { std::cerr << picture.problem.toStdString() << "\n"; }
Picture RenderPicture(const Zemtar::CZemtarDocument& document, const PictureOptions& options);

/// Draws a document as `RenderPicture` does into a file, whose extension names the format and which is whole
/// or not there. Gives an empty text, or what went wrong, for the user.
QString WritePicture(const Zemtar::CZemtarDocument& document, const PictureOptions& options,
                     const QString& file);

/// Draws pictures from all around, turning by equal steps about the vertical, each as `RenderPicture` does
/// and from one distance, into files numbered before the extension: `OUT-001.png` and so on. Gives an empty
/// text, or what went wrong; no frame is left then.
QString WriteTurntable(const Zemtar::CZemtarDocument& document, const PictureOptions& options, int frames,
                       const QString& file);
constexpr int MostTurntableFrames = 3600;

/// Gives an empty text where OpenGL 3.3 is there, otherwise why it is not, for the user. Ask before a window
/// gets an OpenGL widget: Qt ends the process where it cannot make a context for one. Tried once a process.
QString MissingOpenGL();

/// Reads "800x600": two numbers from 1 to 8192. False, with `size` untouched, for other text.
bool ParsePictureSize(const QString& text, QSize& size);

/// Tells, once the application object is made, whether windows can show.
bool HasDisplay();
