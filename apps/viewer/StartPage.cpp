#include "apps/viewer/StartPage.h"

#include "apps/shared/FormatTable.h"
#include "apps/viewer/Icons.h"
#include "apps/viewer/Texts.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QStyleOption>
#include <QStylePainter>
#include <QVBoxLayout>

using namespace Zemtar;

namespace {

QLabel* MakeLabel(QWidget* parent, const QString& text, double sizeFactor, QPalette::ColorRole role)
{
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * sizeFactor);
    label->setFont(font);
    label->setForegroundRole(role);
    label->setWordWrap(true);
    return label;
}

/// A button with its icon and text at the left. No style sheet does that: buttons with one keep the colours
/// of the style that they were made in.
class StartButton : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QStylePainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        painter.drawControl(QStyle::CE_PushButtonBevel, option);
        const int margin = fontMetrics().height();
        const QRect content = rect().adjusted(margin, 0, -margin, 0);
        const QSize size = iconSize();
        const QRect picture(content.left(), content.center().y() - size.height() / 2, size.width(),
                            size.height());
        option.icon.paint(&painter, picture, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
        const int step = size.width() + margin / 2;
        painter.drawItemText(content.adjusted(step, 0, 0, 0),
                             Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic, option.palette,
                             isEnabled(), option.text, QPalette::ButtonText);
        if (hasFocus()) {
            QStyleOptionFocusRect focus;
            focus.initFrom(this);
            focus.rect = rect().adjusted(2, 2, -2, -2);
            painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
        }
    }
};

QString ReadableFormats()
{
    QStringList names;
    for (const FormatEntry& format : AllFormats()) {
        if (format.CanRead()) {
            names << format.Name();
        }
    }
    return names.join(QStringLiteral(", "));
}

} // namespace

StartPage::StartPage(const QList<QAction*>& actions, QWidget* parent)
    : QWidget(parent),
      m_recentHeading(MakeLabel(this, tr("Recent files"), 1.15, QPalette::WindowText)),
      m_recent(new QListWidget(this))
{
    setObjectName(QStringLiteral("startPage"));
    m_recent->setObjectName(QStringLiteral("recentFiles"));
    m_recent->setFrameShape(QFrame::NoFrame);
    m_recent->viewport()->setAutoFillBackground(false);
    m_recent->setSpacing(fontMetrics().height() / 6);
    m_recent->setCursor(Qt::PointingHandCursor);
    m_recent->installEventFilter(this);
    connect(m_recent, &QListWidget::itemClicked, this, &StartPage::Choose);
    auto* column = new QVBoxLayout;
    column->setSpacing(fontMetrics().height() * 2 / 3);
    column->addStretch(2);
    column->addWidget(MakeHeading());
    for (QAction* action : actions) {
        column->addWidget(MakeButton(action));
    }
    column->addWidget(MakeLabel(this, tr("Or drop files here. This build reads %1.").arg(ReadableFormats()),
                                1.0, QPalette::PlaceholderText));
    column->addSpacing(fontMetrics().height());
    column->addWidget(m_recentHeading);
    column->addWidget(m_recent, 3);
    column->addStretch(1);
    auto* page = new QHBoxLayout(this);
    page->addStretch(1);
    page->addLayout(column, 2);
    page->addStretch(1);
}

QWidget* StartPage::MakeHeading()
{
    auto* heading = new QWidget(this);
    auto* layout = new QHBoxLayout(heading);
    layout->setContentsMargins({});
    auto* picture = new QLabel(heading);
    const int side = 2 * style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this);
    picture->setPixmap(Icons::Application().pixmap(QSize(side, side), devicePixelRatio()));
    auto* texts = new QVBoxLayout;
    texts->addWidget(
        MakeLabel(heading, BrandingText(CZemtarBranding::ApplicationTitle), 2.0, QPalette::WindowText));
    texts->addWidget(MakeLabel(heading, tr("Imports, shows and exports mechanical CAD files"), 1.1,
                               QPalette::PlaceholderText));
    layout->addWidget(picture);
    layout->addSpacing(fontMetrics().height());
    layout->addLayout(texts, 1);
    return heading;
}

QWidget* StartPage::MakeButton(QAction* action)
{
    auto* button = new StartButton(action->icon(), action->text(), this);
    const QString shortcut = action->shortcut().toString(QKeySequence::NativeText);
    button->setToolTip(shortcut.isEmpty() ? action->toolTip()
                                          : QStringLiteral("%1 (%2)").arg(action->toolTip(), shortcut));
    button->setMinimumHeight(2 * fontMetrics().height());
    connect(button, &QPushButton::clicked, action, &QAction::trigger);
    return button;
}

void StartPage::Choose(const QListWidgetItem* item)
{
    if (item) {
        emit RecentFileChosen(item->data(Qt::UserRole).toString());
    }
}

bool StartPage::eventFilter(QObject* watched, QEvent* event)
{
    // One click opens a file, and so does Enter; "activated" would be a double click on most systems.
    if (watched == m_recent && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            Choose(m_recent->currentItem());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void StartPage::SetRecentFiles(const QStringList& files)
{
    m_recent->clear();
    for (const QString& file : files) {
        const QFileInfo info(file);
        auto* item = new QListWidgetItem(
            QStringLiteral("%1   %2").arg(info.fileName(), QDir::toNativeSeparators(info.absolutePath())),
            m_recent);
        item->setData(Qt::UserRole, file);
        item->setToolTip(QDir::toNativeSeparators(file));
    }
    m_recentHeading->setVisible(!files.isEmpty());
    m_recent->setVisible(!files.isEmpty());
}
