#include "apps/viewer/Appearance.h"

#include "apps/viewer/ContrastStyle.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>

namespace {

struct Tones
{
    QColor window, base, alternate, button, text, faint, highlight, link;
};

QPalette PaletteOf(const Tones& tones)
{
    QPalette palette(tones.button, tones.window);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, tones.text);
        palette.setColor(QPalette::Disabled, role, tones.faint);
    }
    palette.setColor(QPalette::Base, tones.base);
    palette.setColor(QPalette::AlternateBase, tones.alternate);
    palette.setColor(QPalette::ToolTipBase, tones.alternate);
    palette.setColor(QPalette::PlaceholderText, tones.faint);
    palette.setColor(QPalette::Highlight, tones.highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, tones.faint);
    palette.setColor(QPalette::Link, tones.link);
    return palette;
}

} // namespace

void ApplyAppearance(ViewerSettings::Appearance look)
{
    static const QString systemStyle = QApplication::style()->objectName();
    static const QPalette systemPalette = QApplication::palette();
    if (look == ViewerSettings::Appearance::System) {
        QApplication::setStyle(systemStyle);
        QApplication::setPalette(systemPalette);
        return;
    }
    // The system's own style need not follow a palette that is not its own; this one does.
    QApplication::setStyle(new ContrastStyle);
    const bool dark = look == ViewerSettings::Appearance::Dark;
    const QColor accent(dark ? 0x3d7ab8 : 0x2f6fb5);
    QApplication::setPalette(
        dark ? PaletteOf({0x2b2d30, 0x1f2123, 0x26282b, 0x3a3d41, 0xe4e6e8, 0x8a8f95, accent, 0x6cb0f0})
             : PaletteOf({0xf0f1f2, 0xffffff, 0xf5f7f9, 0xe8eaec, 0x1d2023, 0x83888e, accent, 0x1f5fa5}));
}
