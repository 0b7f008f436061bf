#include "apps/viewer/BusyWindow.h"

#include "apps/viewer/Icons.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <QWindow>

namespace {

/// A window manager that never shows the window must not stop the work.
constexpr qint64 LongestWaitMilliseconds = 500;
/// So much of the work's time may go to a storm of events.
constexpr int LongestEventsMilliseconds = 40;
constexpr int BarSteps = 1000;

/// The engine's stages in the user's language.
QString StageText(const QString& stage)
{
    if (stage == QLatin1String("reading")) {
        return BusyWindow::tr("Reading ...");
    }
    if (stage == QLatin1String("building")) {
        return BusyWindow::tr("Building the model ...");
    }
    if (stage == QLatin1String("meshing")) {
        return BusyWindow::tr("Meshing ...");
    }
    return BusyWindow::tr("Writing ...");
}

} // namespace

BusyWindow::BusyWindow(QWidget* parent, const QString& title)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      m_stage(new QLabel(this)),
      m_bar(new QProgressBar(this)),
      m_cancel(new QPushButton(tr("Cancel"), this))
{
    setObjectName(QStringLiteral("busy"));
    m_cancel->setObjectName(QStringLiteral("cancel"));
    m_bar->setObjectName(QStringLiteral("progress"));
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
    m_bar->setRange(0, 0);
    m_bar->setTextVisible(false);
    connect(m_cancel, &QPushButton::clicked, this, &BusyWindow::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cancel);
    auto* texts = new QVBoxLayout;
    texts->addWidget(heading);
    texts->addWidget(m_stage);
    texts->addWidget(m_bar);
    texts->addLayout(buttons);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(layout->contentsMargins() * 2);
    layout->setSpacing(layout->spacing() * 2);
    layout->addWidget(picture, 0, Qt::AlignTop);
    layout->addLayout(texts, 1);
}

void BusyWindow::ShowStage(const QString& text)
{
    m_stage->setText(text);
    m_bar->setRange(0, 0);
    show();
    QElapsedTimer timer;
    timer.start();
    do {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, 20);
    } while (!(windowHandle() && windowHandle()->isExposed()) && timer.elapsed() < LongestWaitMilliseconds);
    repaint();
    QGuiApplication::sync();
}

void BusyWindow::EndCancelling()
{
    m_cancel->setEnabled(false);
}

void BusyWindow::Show(const QString& stage, double fraction)
{
    if (!m_cancelled) {
        m_stage->setText(StageText(stage));
        m_bar->setRange(0, BarSteps);
        m_bar->setValue(static_cast<int>(fraction * BarSteps));
    }
    QCoreApplication::processEvents(QEventLoop::AllEvents, LongestEventsMilliseconds);
}

void BusyWindow::reject()
{
    if (!m_cancel->isEnabled()) {
        return;
    }
    m_cancelled = true;
    m_cancel->setEnabled(false);
    m_stage->setText(tr("Cancelling ..."));
    m_bar->setRange(0, 0);
}
