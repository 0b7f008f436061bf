#pragma once

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>

/// The base of icons that are painted anew whenever they are shown, so that a change of the palette or of the
/// screen shows at once.
class PaintedIconEngine : public QIconEngine
{
public:
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
};
