#include "apps/viewer/ViewCube.h"

#include <QMouseEvent>
#include <QPainter>

namespace {

struct CubeSide
{
    StandardView view;
    Vec3 normal;
    Vec3 up; ///< of its text
    const char* name;
};

constexpr CubeSide Sides[] = {
    {StandardView::Front, {0, -1, 0}, {0, 0, 1}, QT_TRANSLATE_NOOP("ViewCube", "Front")},
    {StandardView::Back, {0, 1, 0}, {0, 0, 1}, QT_TRANSLATE_NOOP("ViewCube", "Back")},
    {StandardView::Left, {-1, 0, 0}, {0, 0, 1}, QT_TRANSLATE_NOOP("ViewCube", "Left")},
    {StandardView::Right, {1, 0, 0}, {0, 0, 1}, QT_TRANSLATE_NOOP("ViewCube", "Right")},
    {StandardView::Top, {0, 0, 1}, {0, 1, 0}, QT_TRANSLATE_NOOP("ViewCube", "Top")},
    {StandardView::Bottom, {0, 0, -1}, {0, -1, 0}, QT_TRANSLATE_NOOP("ViewCube", "Bottom")},
};

constexpr double HalfEdge =
    0.56; ///< of half the widget; a cube seen along its diagonal is 1.73 times as wide
constexpr double LeastFacing = 0.03;

} // namespace

ViewCube::ViewCube(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("viewCube"));
    const int side = 6 * fontMetrics().height();
    setFixedSize(side, side);
    setMouseTracking(true);
    setToolTip(tr("Click a side to look at it"));
}

void ViewCube::Turn(const Camera& camera)
{
    m_right = camera.Right();
    m_up = camera.Up();
    m_forward = camera.Forward();
    update();
}

std::vector<ViewCube::Side> ViewCube::VisibleSides() const
{
    std::vector<Side> visible;
    const double half = 0.5 * width();
    for (const CubeSide& side : Sides) {
        const double facing = -Dot(side.normal, m_forward);
        if (facing < LeastFacing) {
            continue;
        }
        const Vec3 across = Cross(side.up, side.normal);
        Side shown{side.view, {}, facing};
        for (const auto& [u, v] : {std::pair(-1, 1), std::pair(1, 1), std::pair(1, -1), std::pair(-1, -1)}) {
            const Vec3 corner = HalfEdge * (side.normal + u * across + v * side.up);
            shown.corners << QPointF(half + half * Dot(corner, m_right), half - half * Dot(corner, m_up));
        }
        visible.push_back(shown);
    }
    return visible;
}

std::optional<StandardView> ViewCube::SideAt(const QPointF& point) const
{
    for (const Side& side : VisibleSides()) {
        if (side.corners.containsPoint(point, Qt::OddEvenFill)) {
            return side.view;
        }
    }
    return std::nullopt;
}

void ViewCube::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dark = palette().color(QPalette::Window).lightness() < 128;
    constexpr int TextSide = 100;
    QFont textFont = font();
    textFont.setPixelSize(24);
    textFont.setBold(true);
    for (const Side& side : VisibleSides()) {
        QColor fill = palette().color(QPalette::Button);
        fill = dark ? fill.lighter(100 + static_cast<int>(50 * side.facing))
                    : fill.darker(125 - static_cast<int>(25 * side.facing));
        fill = m_hovered == side.view ? palette().color(QPalette::Highlight) : fill;
        fill.setAlphaF(0.88F);
        painter.setPen(QPen(palette().color(QPalette::Mid), 1.0));
        painter.setBrush(fill);
        painter.drawPolygon(side.corners);
        QTransform onto;
        const QPolygonF square(QRectF(0, 0, TextSide, TextSide));
        if (!QTransform::quadToQuad(square.first(4), side.corners, onto)) {
            continue;
        }
        const auto text = std::find_if(std::begin(Sides), std::end(Sides),
                                       [&](const CubeSide& entry) { return entry.view == side.view; });
        painter.setTransform(onto);
        painter.setFont(textFont);
        painter.setPen(
            palette().color(m_hovered == side.view ? QPalette::HighlightedText : QPalette::ButtonText));
        painter.drawText(QRect(0, 0, TextSide, TextSide), Qt::AlignCenter, tr(text->name));
        painter.resetTransform();
    }
}

void ViewCube::mousePressEvent(QMouseEvent* event)
{
    if (const auto side = SideAt(event->position())) {
        emit Chosen(*side);
    } else {
        event->ignore(); // the view's own
    }
}

void ViewCube::mouseMoveEvent(QMouseEvent* event)
{
    const auto side = SideAt(event->position());
    if (side != m_hovered) {
        m_hovered = side;
        update();
    }
}

void ViewCube::leaveEvent(QEvent* /*event*/)
{
    m_hovered.reset();
    update();
}
