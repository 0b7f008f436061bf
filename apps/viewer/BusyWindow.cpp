#include "apps/viewer/BusyWindow.h"

#include "apps/viewer/Icons.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>
#include <QWindow>

namespace {

/// A window manager that never shows the window must not stop the work.
constexpr qint64 LongestWaitMilliseconds = 500;

} // namespace

BusyWindow::BusyWindow(QWidget* parent, const QString& title)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), m_stage(new QLabel(this))
{
    setObjectName(QStringLiteral("busy"));
    setModal(true);
    setWindowTitle(title);
    auto* picture = new QLabel(this);
    const int side = 2 * style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this) / 2;
    picture->setPixmap(Icons::Application().pixmap(QSize(side, side), devicePixelRatio()));
    auto* heading = new QLabel(title, this);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    m_stage->setMinimumWidth(fontMetrics().averageCharWidth() * 44);
    auto* texts = new QVBoxLayout;
    texts->addWidget(heading);
    texts->addWidget(m_stage);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(layout->contentsMargins() * 2);
    layout->setSpacing(layout->spacing() * 2);
    layout->addWidget(picture);
    layout->addLayout(texts, 1);
}

void BusyWindow::ShowStage(const QString& text)
{
    m_stage->setText(text);
    show();
    QElapsedTimer timer;
    timer.start();
    do {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, 20);
    } while (!(windowHandle() && windowHandle()->isExposed()) && timer.elapsed() < LongestWaitMilliseconds);
    repaint();
    QGuiApplication::sync();
}
