#include "apps/viewer/ImageWindow.h"

ImageWindow::ImageWindow(QWidget* parent) : QWidget(parent, Qt::Window) {}
ImageWindow::~ImageWindow() = default;
bool ImageWindow::Load(const QString& /*file*/)
{
    return false;
}
