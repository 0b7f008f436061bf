#include "apps/viewer/HelpDialog.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

struct HelpLine
{
    const char* what;
    const char* how;
};

constexpr HelpLine MouseLines[] = {
    {QT_TRANSLATE_NOOP("HelpDialog", "Turn"),
     QT_TRANSLATE_NOOP("HelpDialog", "drag with the left button, or arrow keys")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Move"),
     QT_TRANSLATE_NOOP("HelpDialog", "drag with the middle button, or Shift and the left one")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Zoom"), QT_TRANSLATE_NOOP("HelpDialog", "wheel, or + and -")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Select a part, then its mesh"),
     QT_TRANSLATE_NOOP("HelpDialog", "click; click again")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Fit what is below the cursor"),
     QT_TRANSLATE_NOOP("HelpDialog", "double click")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Menu of the node"), QT_TRANSLATE_NOOP("HelpDialog", "right click")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Look straight at a side"),
     QT_TRANSLATE_NOOP("HelpDialog", "click it on the cube")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Export by drag and drop"),
     QT_TRANSLATE_NOOP("HelpDialog", "drag a row of the tree to a folder or program")},
    {QT_TRANSLATE_NOOP("HelpDialog", "Next and previous hit of a search"),
     QT_TRANSLATE_NOOP("HelpDialog", "Enter and Shift+Enter in the search field")},
};

QString Row(const QString& what, const QString& how)
{
    return QStringLiteral("<tr><td>%1&nbsp;&nbsp;&nbsp;</td><td><b>%2</b></td></tr>")
        .arg(what.toHtmlEscaped(), how.toHtmlEscaped());
}

QString PlainText(const QAction& action)
{
    QString text = action.text();
    text.replace(QStringLiteral("&&"), QStringLiteral("\n")).remove('&').replace('\n', '&');
    return text.remove(QStringLiteral("..."));
}

} // namespace

HelpDialog::HelpDialog(const QList<QAction*>& actions, QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("help"));
    setWindowTitle(tr("Mouse and keys"));
    QString html = QStringLiteral("<h3>%1</h3><table>").arg(tr("In the view"));
    for (const HelpLine& line : MouseLines) {
        html += Row(tr(line.what), tr(line.how));
    }
    html += QStringLiteral("</table><h3>%1</h3><table>").arg(tr("Keys"));
    for (const QAction* action : actions) {
        const QString key = action->shortcut().toString(QKeySequence::NativeText);
        if (!key.isEmpty()) {
            html += Row(PlainText(*action), key);
        }
    }
    auto* text = new QTextBrowser(this);
    text->setHtml(html + QStringLiteral("</table>"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text, 1);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 80, fontMetrics().height() * 36);
}
