#pragma once

#include <QProxyStyle>

/// The style that follows the light and the dark palette: Fusion, with an outline around boxes to tick and
/// round buttons that stands out on dark grounds, too, where Fusion's own is darker than the ground.
class ContrastStyle : public QProxyStyle
{
    Q_OBJECT

public:
    ContrastStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
};
