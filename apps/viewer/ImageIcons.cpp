#include "apps/viewer/ImageIcons.h"

#include "apps/viewer/PaintedIconEngine.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace {

/// Lines on a square of 16 units; letters after M and L are moved to and drawn to.
struct Drawing
{
    const char* lines;       ///< "M x y L x y ...", as in vector pictures; "C x y r" is a circle.
    const char* filled = ""; ///< Shapes in the highlight's colour, below the lines.
};

constexpr Drawing Drawings[] = {
    {"M 2 13 L 2 3 L 6 3 L 7.5 5 L 13 5 L 13 7 M 2 13 L 4.5 7 L 15 7 L 12.5 13 L 2 13"},
    {"M 2.5 2.5 L 11.5 2.5 L 13.5 4.5 L 13.5 13.5 L 2.5 13.5 L 2.5 2.5 M 5 13.5 L 5 9 L 11 9 L 11 13.5",
     "M 5 2.5 L 10 2.5 L 10 6 L 5 6 L 5 2.5"},
    {"M 5.5 2.5 L 13.5 2.5 L 13.5 10.5 L 5.5 10.5 L 5.5 2.5 M 5.5 5.5 L 2.5 5.5 L 2.5 13.5 L 10.5 13.5 L "
     "10.5 "
     "10.5"},
    {"M 6 3 L 3 3 L 3 14 L 13 14 L 13 3 L 10 3 M 6 8 L 10 8 M 6 11 L 10 11",
     "M 6 2 L 10 2 L 10 4.5 L 6 4.5 L 6 2"},
    {"M 6 2.5 L 2.5 6 L 6 9.5 M 2.5 6 L 10.5 6 L 13 8.5 L 13 10.5 L 10.5 13 L 6 13"},
    {"M 10 2.5 L 13.5 6 L 10 9.5 M 13.5 6 L 5.5 6 L 3 8.5 L 3 10.5 L 5.5 13 L 10 13"},
    {"M 7 3 L 2.5 8 L 7 13 M 2.5 8 L 9 8 M 13 2.5 L 8.5 8 L 13 13.5"},
    {"C 7 7 4.5 M 10.3 10.3 L 14 14 M 5 7 L 9 7 M 7 5 L 7 9"},
    {"C 7 7 4.5 M 10.3 10.3 L 14 14 M 5 7 L 9 7"},
    {"M 2.5 6 L 2.5 2.5 L 6 2.5 M 10 2.5 L 13.5 2.5 L 13.5 6 M 13.5 10 L 13.5 13.5 L 10 13.5 M 6 13.5 L 2.5 "
     "13.5 L "
     "2.5 10",
     "M 5.5 5.5 L 10.5 5.5 L 10.5 10.5 L 5.5 10.5 L 5.5 5.5"},
    {"M 2.5 5.5 L 4 4 L 4 12 M 10.5 5.5 L 12 4 L 12 12 M 8 6.5 L 8 7.1 M 8 9.9 L 8 10.5"},
    {"M 2 3.5 L 14 3.5 L 14 12.5 L 2 12.5 L 2 3.5 M 8 1.5 L 8 14.5",
     "M 8 3.5 L 14 3.5 L 14 12.5 L 8 12.5 L 8 3.5"},
    {"M 1.5 1.5 L 14.5 1.5 L 14.5 14.5 L 1.5 14.5 L 1.5 1.5 M 5.8 1.5 L 5.8 14.5 M 10.2 1.5 L 10.2 14.5 "
     "M 1.5 5.8 L 14.5 5.8 M 1.5 10.2 L 14.5 10.2",
     "M 5.8 5.8 L 10.2 5.8 L 10.2 10.2 L 5.8 10.2 L 5.8 5.8"},
    {"M 1.5 13.5 L 1.5 3.5 L 6 3.5 L 7.5 5.5 L 14.5 5.5 L 14.5 13.5 L 1.5 13.5",
     "M 6.5 7.5 L 11 9.5 L 6.5 11.5 L 6.5 7.5"},
};
static_assert(std::size(Drawings) == std::size_t(ImageIcon::Batch) + 1);

QPainterPath PathOf(const char* text)
{
    const QStringList words = QString::fromLatin1(text).split(' ', Qt::SkipEmptyParts);
    QPainterPath path;
    for (qsizetype i = 0; i + 2 < words.size(); i += 3) {
        const QPointF point(words[i + 1].toDouble(), words[i + 2].toDouble());
        if (words[i] == 'M') {
            path.moveTo(point);
        } else if (words[i] == 'L') {
            path.lineTo(point);
        } else if (i + 3 < words.size()) {
            const double radius = words[i + 3].toDouble();
            path.addEllipse(point, radius, radius);
            ++i;
        }
    }
    return path;
}

class LineIconEngine : public PaintedIconEngine
{
public:
    explicit LineIconEngine(const Drawing& drawing) : m_drawing(drawing) {}

    QIconEngine* clone() const override { return new LineIconEngine(m_drawing); }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const QPalette palette = QGuiApplication::palette();
        QColor fill = palette.color(group, QPalette::Highlight);
        fill.setAlphaF(0.6F);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / 16.0, rect.height() / 16.0);
        painter->fillPath(PathOf(m_drawing.filled), fill);
        painter->setPen(QPen(palette.color(group, QPalette::ButtonText), 1.2, Qt::SolidLine, Qt::RoundCap,
                             Qt::RoundJoin));
        painter->drawPath(PathOf(m_drawing.lines));
        painter->restore();
    }

private:
    const Drawing& m_drawing;
};

} // namespace

QIcon MakeImageIcon(ImageIcon kind)
{
    return QIcon(new LineIconEngine(Drawings[int(kind)]));
}
