#include "apps/render/Picture.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QStringList>

namespace {

constexpr int LargestSide = 8192;

} // namespace

Picture RenderPicture(const Zemtar::CZemtarDocument& /*document*/, const PictureOptions& options)
{
    Picture picture;
    picture.image = QImage(options.size, QImage::Format_RGB32);
    picture.image.fill(Qt::gray);
    return picture;
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

void UseDisplayIfAny()
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        return;
    }
    // NOTE: Qt tries the platforms of such a list in their order, and ends the process when none starts.
    QByteArray platforms;
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        platforms += "wayland;";
    }
    if (qEnvironmentVariableIsSet("DISPLAY")) {
        platforms += "xcb;";
    }
    qputenv("QT_QPA_PLATFORM", platforms + "offscreen");
#endif
}

bool HasDisplay()
{
    return QGuiApplication::platformName() != QLatin1String("offscreen") &&
           QGuiApplication::platformName() != QLatin1String("minimal");
}
