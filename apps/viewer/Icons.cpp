#include "apps/viewer/Icons.h"

#include "apps/viewer/PaintedIconEngine.h"
#include "apps/viewer/Texts.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include <array>

namespace {

/// All glyphs are drawn on a square of this many units.
constexpr double Grid = 16.0;

/// A painter over the grid, with the pen and the accent that the palette gives.
struct Canvas
{
    QPainter& painter;
    QColor line;
    QColor accent;

    void Line(std::initializer_list<QPointF> points) const
    {
        painter.drawPolyline(points.begin(), static_cast<int>(points.size()));
    }
    void Shape(std::initializer_list<QPointF> points, const QColor& fill = QColor()) const
    {
        painter.setBrush(fill.isValid() ? QBrush(fill) : QBrush(Qt::NoBrush));
        painter.drawPolygon(points.begin(), static_cast<int>(points.size()));
        painter.setBrush(Qt::NoBrush);
    }
};

// The corners of a cube seen from above: top, right and front faces share the middle.
constexpr QPointF CubeTop(8, 1.5), CubeRightUp(14, 4.8), CubeMiddle(8, 8.2), CubeLeftUp(2, 4.8),
    CubeRightDown(14, 11.2), CubeBottom(8, 14.5), CubeLeftDown(2, 11.2);

void DrawCube(const Canvas& canvas, const QColor& top, const QColor& left, const QColor& right)
{
    canvas.Shape({CubeTop, CubeRightUp, CubeMiddle, CubeLeftUp}, top);
    canvas.Shape({CubeLeftUp, CubeMiddle, CubeBottom, CubeLeftDown}, left);
    canvas.Shape({CubeMiddle, CubeRightUp, CubeRightDown, CubeBottom}, right);
}

void DrawBox(const Canvas& canvas, QPointF corner, double size, const QColor& fill)
{
    const double deep = 0.35 * size;
    const auto at = [&](double x, double y) { return corner + QPointF(x, y); };
    canvas.Shape({at(0, deep), at(size - deep, deep), at(size - deep, size), at(0, size)}, fill);
    canvas.Line({at(0, deep), at(deep, 0), at(size, 0), at(size - deep, deep)});
    canvas.Line({at(size, 0), at(size, size - deep), at(size - deep, size)});
}

void DrawEye(const Canvas& canvas, bool open)
{
    QPainterPath lids(QPointF(1, 8));
    lids.quadTo(8, 1, 15, 8);
    lids.quadTo(8, 15, 1, 8);
    canvas.painter.drawPath(lids);
    if (open) {
        canvas.painter.setBrush(canvas.line);
        canvas.painter.drawEllipse(QPointF(8, 8), 2, 2);
        canvas.painter.setBrush(Qt::NoBrush);
    } else {
        canvas.Line({{2.5, 13.5}, {13.5, 2.5}});
    }
}

void DrawFrameCorners(const Canvas& canvas)
{
    canvas.Line({{1.5, 5}, {1.5, 1.5}, {5, 1.5}});
    canvas.Line({{11, 1.5}, {14.5, 1.5}, {14.5, 5}});
    canvas.Line({{14.5, 11}, {14.5, 14.5}, {11, 14.5}});
    canvas.Line({{5, 14.5}, {1.5, 14.5}, {1.5, 11}});
}

void DrawTray(const Canvas& canvas, bool arrowIn)
{
    canvas.Line({{1.5, 9.5}, {1.5, 14.5}, {14.5, 14.5}, {14.5, 9.5}});
    const double tip = arrowIn ? 11.0 : 1.5;
    const double barb = arrowIn ? 7.5 : 5.0;
    canvas.painter.setPen(QPen(canvas.accent, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    canvas.Line({{8, 1.5}, {8, 11}});
    canvas.Line({{4.5, barb}, {8, tip}, {11.5, barb}});
}

void DrawNodeKind(const Canvas& canvas, Glyph glyph, const QColor& tint)
{
    switch (glyph) {
    case Glyph::Assembly:
        DrawBox(canvas, {1, 8}, 6.5, tint);
        DrawBox(canvas, {8.5, 8}, 6.5, tint);
        DrawBox(canvas, {5, 1}, 6.5, tint);
        break;
    case Glyph::Part:
        DrawCube(canvas, tint, QColor(), tint);
        break;
    case Glyph::Group:
        canvas.Shape({{1.5, 3.5}, {6, 3.5}, {7.5, 5.5}, {14.5, 5.5}, {14.5, 13.5}, {1.5, 13.5}}, tint);
        break;
    case Glyph::Mesh:
        canvas.Shape({{8, 1.5}, {14.5, 13.5}, {1.5, 13.5}}, tint);
        canvas.Shape({{11.25, 7.5}, {8, 13.5}, {4.75, 7.5}});
        break;
    default:
        canvas.Line({{1.5, 13}, {5.5, 4.5}, {9.5, 11}, {14.5, 2.5}});
        canvas.painter.setBrush(canvas.line);
        for (const QPointF point :
             {QPointF(1.5, 13), QPointF(5.5, 4.5), QPointF(9.5, 11), QPointF(14.5, 2.5)}) {
            canvas.painter.drawEllipse(point, 1, 1);
        }
        break;
    }
}

void DrawView(const Canvas& canvas, Glyph glyph)
{
    const QColor none;
    switch (glyph) {
    case Glyph::ViewIso:
        DrawCube(canvas, canvas.accent, canvas.accent, canvas.accent);
        break;
    case Glyph::ViewTop:
        DrawCube(canvas, canvas.accent, none, none);
        break;
    case Glyph::ViewFront:
        DrawCube(canvas, none, canvas.accent, none);
        break;
    case Glyph::ViewRight:
        DrawCube(canvas, none, none, canvas.accent);
        break;
    default: // the three faces that look away: a cube of glass, with the face behind it filled
        canvas.Shape({CubeTop, CubeRightUp, CubeRightDown, CubeBottom, CubeLeftDown, CubeLeftUp});
        const QPointF back(8, 7.8);
        if (glyph == Glyph::ViewBottom) {
            canvas.Shape({back, CubeRightDown, CubeBottom, CubeLeftDown}, canvas.accent);
        } else if (glyph == Glyph::ViewLeft) {
            canvas.Shape({CubeTop, back, CubeLeftDown, CubeLeftUp}, canvas.accent);
        } else {
            canvas.Shape({CubeTop, CubeRightUp, CubeRightDown, back}, canvas.accent);
        }
        canvas.Line({CubeTop, back, CubeLeftDown});
        canvas.Line({back, CubeRightDown});
        break;
    }
}

void DrawTool(const Canvas& canvas, Glyph glyph, const QColor& tint)
{
    QPainter& painter = canvas.painter;
    switch (glyph) {
    case Glyph::Fit:
        DrawFrameCorners(canvas);
        canvas.Shape({{5, 5}, {11, 5}, {11, 11}, {5, 11}}, tint);
        break;
    case Glyph::Isolate:
        painter.setOpacity(0.4);
        canvas.Shape({{1.5, 1.5}, {6.5, 1.5}, {6.5, 6.5}, {1.5, 6.5}});
        painter.setOpacity(1.0);
        canvas.Shape({{6, 6}, {14.5, 6}, {14.5, 14.5}, {6, 14.5}}, canvas.accent);
        break;
    case Glyph::ShowAll:
        canvas.Shape({{1.5, 1.5}, {6.5, 1.5}, {6.5, 6.5}, {1.5, 6.5}}, tint);
        canvas.Shape({{9.5, 1.5}, {14.5, 1.5}, {14.5, 6.5}, {9.5, 6.5}}, tint);
        canvas.Shape({{1.5, 9.5}, {6.5, 9.5}, {6.5, 14.5}, {1.5, 14.5}}, tint);
        canvas.Shape({{9.5, 9.5}, {14.5, 9.5}, {14.5, 14.5}, {9.5, 14.5}}, tint);
        break;
    case Glyph::Edges:
        DrawCube(canvas, QColor(), QColor(), QColor());
        break;
    case Glyph::Perspective:
        canvas.Shape({{1.5, 1.5}, {14.5, 4.5}, {14.5, 11.5}, {1.5, 14.5}});
        canvas.Line({{8, 3}, {8, 13}});
        canvas.Line({{1.5, 8}, {14.5, 8}});
        break;
    case Glyph::Search:
        painter.drawEllipse(QPointF(6.5, 6.5), 4.5, 4.5);
        canvas.Line({{10, 10}, {14.5, 14.5}});
        break;
    case Glyph::Previous:
        canvas.Line({{3, 10.5}, {8, 5}, {13, 10.5}});
        break;
    case Glyph::Next:
        canvas.Line({{3, 5.5}, {8, 11}, {13, 5.5}});
        break;
    case Glyph::Filter:
        canvas.Shape({{1.5, 2.5}, {14.5, 2.5}, {9.5, 8.5}, {9.5, 14}, {6.5, 12}, {6.5, 8.5}}, tint);
        break;
    case Glyph::Image:
        canvas.Shape({{1.5, 2.5}, {14.5, 2.5}, {14.5, 13.5}, {1.5, 13.5}});
        canvas.Shape({{1.5, 13.5}, {6, 7}, {9, 10.5}, {11, 8.5}, {14.5, 13.5}}, tint);
        painter.drawEllipse(QPointF(11, 5.5), 1.2, 1.2);
        break;
    case Glyph::Log:
        canvas.Shape({{1.5, 2.5}, {14.5, 2.5}, {14.5, 13.5}, {1.5, 13.5}});
        canvas.Line({{4, 5.5}, {6.5, 8}, {4, 10.5}});
        canvas.Line({{8, 10.5}, {12, 10.5}});
        break;
    default:
        for (const double y : {3.5, 8.0, 12.5}) {
            canvas.Line({{1.5, y}, {5, y}});
            canvas.Line({{7.5, y}, {14.5, y}});
        }
        break;
    }
}

void Draw(const Canvas& canvas, Glyph glyph)
{
    QColor tint = canvas.accent;
    tint.setAlphaF(0.35F);
    if (glyph <= Glyph::Polyline) {
        DrawNodeKind(canvas, glyph, tint);
    } else if (glyph == Glyph::Eye || glyph == Glyph::EyeOff) {
        DrawEye(canvas, glyph == Glyph::Eye);
    } else if (glyph == Glyph::Import || glyph == Glyph::Export) {
        DrawTray(canvas, glyph == Glyph::Import);
    } else if (glyph >= Glyph::ViewIso) {
        DrawView(canvas, glyph);
    } else {
        DrawTool(canvas, glyph, tint);
    }
}

class GlyphEngine : public PaintedIconEngine
{
public:
    explicit GlyphEngine(Glyph glyph) : m_glyph(glyph) {}

    QIconEngine* clone() const override { return new GlyphEngine(m_glyph); }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        const QPalette palette = QGuiApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        QColor line =
            palette.color(group, mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText);
        QColor accent = mode == QIcon::Selected ? line : palette.color(group, QPalette::Highlight);
        const double side = std::min(rect.width(), rect.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center() - QPointF(side / 2, side / 2));
        painter->scale(side / Grid, side / Grid);
        painter->setPen(QPen(line, 1.1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        Draw({*painter, line, accent}, m_glyph);
        painter->restore();
    }

private:
    Glyph m_glyph;
};

} // namespace

QIcon Icons::Of(Glyph glyph)
{
    static std::array<QIcon, static_cast<std::size_t>(Glyph::ViewBottom) + 1> icons;
    QIcon& icon = icons[static_cast<std::size_t>(glyph)];
    if (icon.isNull()) {
        icon = QIcon(new GlyphEngine(glyph));
    }
    return icon;
}

QIcon Icons::Application()
{
    return QIcon(BrandingText(Zemtar::CZemtarBranding::WindowIcon));
}
