#include "apps/viewer/LogPanel.h"

#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QMenu>
#include <QTime>

#include <memory>

namespace {

constexpr int MaximumLines = 5000;

} // namespace

LogPanel::LogPanel(QWidget* parent) : QPlainTextEdit(parent)
{
    setObjectName(QStringLiteral("log"));
    setReadOnly(true);
    setMaximumBlockCount(MaximumLines);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setPlaceholderText(tr("What the library writes on standard error appears here."));
}

void LogPanel::Append(const QStringList& lines)
{
    const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss  "));
    for (const QString& line : lines) {
        appendPlainText(time + line);
    }
}

void LogPanel::contextMenuEvent(QContextMenuEvent* event)
{
    const std::unique_ptr<QMenu> menu(createStandardContextMenu());
    menu->addSeparator();
    menu->addAction(tr("Clear"), this, &QPlainTextEdit::clear);
    menu->exec(event->globalPos());
}
