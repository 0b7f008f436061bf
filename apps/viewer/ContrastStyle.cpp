#include "apps/viewer/ContrastStyle.h"

#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

ContrastStyle::ContrastStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

void ContrastStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                  const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isBox = element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
    if ((!isBox && element != PE_IndicatorRadioButton) ||
        option->palette.color(QPalette::Window).lightness() > 127) {
        return;
    }
    const auto group = option->state.testFlag(State_Enabled) ? QPalette::Active : QPalette::Disabled;
    QColor line = option->palette.color(group, QPalette::WindowText);
    line.setAlphaF(0.55F);
    painter->save();
    painter->setPen(line);
    painter->setBrush(Qt::NoBrush);
    if (isBox) {
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    } else {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->drawEllipse(QRectF(option->rect).adjusted(1.5, 1.5, -1.5, -1.5));
    }
    painter->restore();
}
