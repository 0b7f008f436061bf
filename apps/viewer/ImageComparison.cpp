#include "apps/viewer/ImageComparison.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr double LeastZoom = 1.0 / 256;
constexpr double MostZoom = 64.0;
constexpr double ZoomStep = 1.25;
/// From this zoom on the single pixels are shown, not smoothed.
constexpr double SharpZoom = 2.0;
constexpr int PanStep = 48;
/// A tiled picture in each direction; the middle one is the result's own place.
constexpr int Tiles = 3;

/// Light and dark squares that suit the palette.
QBrush ChequeredGround(const QPalette& palette, double ratio)
{
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    const int side = std::max(4, int(8 * ratio));
    QPixmap tile(2 * side, 2 * side);
    tile.fill(isDark ? QColor(72, 72, 72) : QColor(255, 255, 255));
    QPainter painter(&tile);
    const QColor other = isDark ? QColor(96, 96, 96) : QColor(208, 208, 208);
    painter.fillRect(0, 0, side, side, other);
    painter.fillRect(side, side, side, side, other);
    painter.end();
    tile.setDevicePixelRatio(ratio);
    return QBrush(tile);
}

} // namespace

ImageComparison::ImageComparison(QWidget* parent) : QWidget(parent)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Original and result"));
    setToolTip(tr("Drag to move, turn the wheel to zoom, double-click to fit"));
}

void ImageComparison::SetOriginal(const QImage& image, const QString& title)
{
    const bool isOtherSize = m_original.wholeSize != image.size();
    m_original = {image, image.size(), title, {}, 0};
    if (isOtherSize) {
        FitToWindow();
    }
    update();
}

void ImageComparison::SetResult(const QImage& image, QSize wholeSize, const QString& title)
{
    const bool isOtherSize = m_result.wholeSize != wholeSize;
    m_result = {image, wholeSize, title, {}, 0};
    if (isOtherSize && m_isFitted) {
        FitToWindow();
    }
    update();
}

void ImageComparison::SetMode(Mode mode)
{
    m_mode = mode;
    if (m_isFitted) {
        FitToWindow();
    }
    update();
}

void ImageComparison::SetTiled(bool on)
{
    m_isTiled = on;
    if (m_isFitted) {
        FitToWindow();
    }
    update();
}

void ImageComparison::SetDrawsArea(bool on)
{
    m_drawsArea = on;
    m_isDrawing = false;
    SetArea({});
}

void ImageComparison::SetArea(const QRect& area)
{
    m_area = area;
    update();
}

void ImageComparison::FitToWindow()
{
    const QSizeF pane = PaneOf(m_result).size() - QSizeF(16, 16);
    const QSizeF picture =
        m_original.wholeSize.expandedTo(m_result.wholeSize).expandedTo({1, 1}) * (m_isTiled ? Tiles : 1);
    const double fitting = std::min(pane.width() / picture.width(), pane.height() / picture.height());
    m_zoom = std::clamp(fitting * devicePixelRatioF(), LeastZoom, MostZoom);
    m_center = {0.5, 0.5};
    m_isFitted = true;
    emit ZoomChanged(m_zoom);
    update();
}

void ImageComparison::ActualSize()
{
    SetZoom(1.0, PaneOf(m_result).center());
}

void ImageComparison::ZoomBy(double factor)
{
    SetZoom(m_zoom * factor, PaneOf(m_result).center());
}

QSize ImageComparison::sizeHint() const
{
    return fontMetrics().averageCharWidth() * QSize(120, 75);
}

QSize ImageComparison::minimumSizeHint() const
{
    return fontMetrics().averageCharWidth() * QSize(40, 20);
}

QRect ImageComparison::PaneOf(const Picture& picture) const
{
    if (m_mode == Split) {
        return rect();
    }
    const int half = (width() - 1) / 2;
    return &picture == &m_original ? QRect(0, 0, half, height()) : QRect(width() - half, 0, half, height());
}

QRectF ImageComparison::TargetOf(const Picture& picture) const
{
    const double scale = m_zoom / devicePixelRatioF();
    const QSizeF size = QSizeF(picture.wholeSize) * scale;
    const QPointF middle = QRectF(PaneOf(picture)).center();
    return {middle - QPointF(m_center.x() * size.width(), m_center.y() * size.height()), size};
}

QPoint ImageComparison::PixelAt(const Picture& picture, QPointF position) const
{
    const QRectF target = TargetOf(picture);
    const QPointF part = position - target.topLeft();
    return {int(std::floor(part.x() / target.width() * picture.wholeSize.width())),
            int(std::floor(part.y() / target.height() * picture.wholeSize.height()))};
}

QString ImageComparison::PixelText(const Picture& picture, QPointF position) const
{
    const QPoint pixel = PixelAt(picture, position);
    if (picture.image.isNull() || !QRect({}, picture.wholeSize).contains(pixel)) {
        return {};
    }
    const bool isReduced = picture.image.size() != picture.wholeSize;
    const int x = int(qint64(pixel.x()) * picture.image.width() / picture.wholeSize.width());
    const int y = int(qint64(pixel.y()) * picture.image.height() / picture.wholeSize.height());
    const QRgb rgb = picture.image.pixel(x, y);
    QString text = QStringLiteral("%1 %2 %3").arg(qRed(rgb)).arg(qGreen(rgb)).arg(qBlue(rgb));
    if (picture.image.hasAlphaChannel()) {
        text += tr(" alpha %1").arg(qAlpha(rgb));
    }
    return isReduced ? tr("about %1").arg(text) : text;
}

void ImageComparison::ShowPixel(QPointF position)
{
    const bool isLeft = m_mode == SideBySide && position.x() < width() / 2.0;
    const Picture& under = isLeft ? m_original : m_result;
    const QPointF offset = position - QRectF(PaneOf(under)).center();
    const QString before = PixelText(m_original, QRectF(PaneOf(m_original)).center() + offset);
    const QString after = PixelText(m_result, QRectF(PaneOf(m_result)).center() + offset);
    const QPoint pixel = PixelAt(under, position);
    emit Hovered(before.isEmpty() && after.isEmpty() ? QString()
                                                     : tr("x %1, y %2:  %3  \u2192  %4")
                                                           .arg(pixel.x())
                                                           .arg(pixel.y())
                                                           .arg(before.isEmpty() ? tr("outside") : before,
                                                                after.isEmpty() ? tr("outside") : after));
}

int ImageComparison::SplitX() const
{
    return int(m_split * width());
}

bool ImageComparison::IsNearSplit(QPointF position) const
{
    return m_mode == Split && !m_result.image.isNull() && std::abs(position.x() - SplitX()) <= 6;
}

const QImage& ImageComparison::ImageFor(Picture& picture, double scale) const
{
    const int level = scale < 0.5 ? int(std::floor(std::log2(1.0 / scale))) : 0;
    if (level == 0) {
        return picture.image;
    }
    if (picture.smallLevel != level) {
        const QSize size(picture.image.width() >> level, picture.image.height() >> level);
        picture.small =
            picture.image.scaled(size.expandedTo({1, 1}), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        picture.smallLevel = level;
    }
    return picture.small;
}

void ImageComparison::Draw(QPainter& painter, Picture& picture, const QRectF& target, const QRect& clip)
{
    if (picture.image.isNull()) {
        return;
    }
    const double scale = target.width() * devicePixelRatioF() / picture.image.width();
    const QImage& image = ImageFor(picture, scale);
    painter.save();
    painter.setClipRect(clip);
    if (image.hasAlphaChannel()) {
        painter.setBrushOrigin(clip.topLeft());
        painter.fillRect(target.intersected(clip), ChequeredGround(palette(), devicePixelRatioF()));
    }
    // Only the pixels in sight: far zooms must not make the painter step through the rest.
    const double perX = image.width() / target.width();
    const double perY = image.height() / target.height();
    const QRectF seen = target.intersected(clip);
    QRectF source((seen.x() - target.x()) * perX, (seen.y() - target.y()) * perY, seen.width() * perX,
                  seen.height() * perY);
    source = QRectF(source.toAlignedRect().intersected(image.rect()));
    const QRectF drawn(target.x() + source.x() / perX, target.y() + source.y() / perY, source.width() / perX,
                       source.height() / perY);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, scale < SharpZoom);
    painter.drawImage(drawn, image, source);
    painter.restore();
}

void ImageComparison::DrawTiles(QPainter& painter, const QRect& clip)
{
    const QRectF middle = TargetOf(m_result);
    for (int row = -Tiles / 2; row <= Tiles / 2; ++row) {
        for (int column = -Tiles / 2; column <= Tiles / 2; ++column) {
            const QRectF tile = middle.translated(column * middle.width(), row * middle.height());
            if (tile.intersects(clip)) {
                Draw(painter, m_result, tile, clip);
            }
        }
    }
}

void ImageComparison::DrawArea(QPainter& painter, const QRect& clip) const
{
    if (m_area.isEmpty() || m_original.wholeSize.isEmpty()) {
        return;
    }
    const QRectF target = TargetOf(m_original);
    const double scale = target.width() / m_original.wholeSize.width();
    const QRectF area(target.topLeft() + QPointF(m_area.topLeft()) * scale, QSizeF(m_area.size()) * scale);
    painter.save();
    painter.setClipRect(clip);
    QPainterPath around;
    around.addRect(target);
    around.addRect(area);
    painter.fillPath(around, QColor(0, 0, 0, 110));
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRect(area);
    painter.restore();
}

void ImageComparison::DrawTitle(QPainter& painter, const Picture& picture, const QRect& clip,
                                Qt::Alignment side) const
{
    const int gap = fontMetrics().height() / 2;
    const QString title = fontMetrics().elidedText(picture.title, Qt::ElideRight, clip.width() - 4 * gap);
    if (picture.image.isNull() || title.isEmpty() || clip.width() < 8 * gap) {
        return;
    }
    QRect box(0, 0, fontMetrics().horizontalAdvance(title) + 2 * gap, fontMetrics().height() + gap);
    box.moveTop(clip.top() + gap);
    box.moveLeft(side == Qt::AlignLeft ? clip.left() + gap : clip.right() - gap - box.width());
    QColor ground = palette().color(QPalette::Window);
    ground.setAlphaF(0.85F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(box, gap / 2.0, gap / 2.0);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(box, Qt::AlignCenter, title);
}

void ImageComparison::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    if (m_original.image.isNull()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         tr("Open a picture, drop one here, or paste one"));
        return;
    }
    QRect left = PaneOf(m_original);
    QRect right = PaneOf(m_result);
    if (m_mode == Split) {
        left.setRight(SplitX() - 1);
        right.setLeft(SplitX());
    }
    Draw(painter, m_original, TargetOf(m_original), left);
    if (m_isTiled) {
        DrawTiles(painter, right);
    } else {
        Draw(painter, m_result, TargetOf(m_result), right);
    }
    DrawArea(painter, left);
    const int border = m_mode == Split ? SplitX() : width() / 2;
    painter.fillRect(QRect(border - 1, 0, 2, height()),
                     palette().color(m_mode == Split ? QPalette::Highlight : QPalette::Window));
    if (m_mode == Split) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Highlight));
        painter.drawEllipse(QPointF(border, height() / 2.0), 6, 6);
    }
    DrawTitle(painter, m_original, left, Qt::AlignLeft);
    DrawTitle(painter, m_result, right, m_mode == Split ? Qt::AlignRight : Qt::AlignLeft);
}

void ImageComparison::resizeEvent(QResizeEvent* /*event*/)
{
    if (m_isFitted) {
        FitToWindow();
    }
}

void ImageComparison::SetZoom(double zoom, QPointF anchor)
{
    if (m_original.image.isNull()) {
        return;
    }
    const bool isLeft = m_mode == SideBySide && anchor.x() < width() / 2.0;
    const Picture& under = isLeft ? m_original : m_result;
    const QRectF before = TargetOf(under);
    const QPointF place((anchor.x() - before.x()) / before.width(),
                        (anchor.y() - before.y()) / before.height());
    m_zoom = std::clamp(zoom, LeastZoom, MostZoom);
    m_isFitted = false;
    const QRectF after = TargetOf(under);
    PanBy(anchor - QPointF(after.x() + place.x() * after.width(), after.y() + place.y() * after.height()));
    emit ZoomChanged(m_zoom);
    update();
}

void ImageComparison::PanBy(QPointF screen)
{
    const QSizeF size = TargetOf(m_original).size();
    if (size.isEmpty()) {
        return;
    }
    m_isFitted = false;
    m_center = {std::clamp(m_center.x() - screen.x() / size.width(), 0.0, 1.0),
                std::clamp(m_center.y() - screen.y() / size.height(), 0.0, 1.0)};
    update();
}

void ImageComparison::wheelEvent(QWheelEvent* event)
{
    SetZoom(m_zoom * std::pow(ZoomStep, event->angleDelta().y() / 120.0), event->position());
    event->accept();
}

void ImageComparison::mousePressEvent(QMouseEvent* event)
{
    m_last = event->position();
    m_isSplitting = event->button() == Qt::LeftButton && IsNearSplit(m_last);
    m_isDrawing = m_drawsArea && !m_isSplitting && event->button() == Qt::LeftButton &&
                  !m_original.image.isNull() && PaneOf(m_original).contains(m_last.toPoint());
    if (m_isDrawing) {
        m_areaStart = PixelAt(m_original, m_last);
        return;
    }
    m_isPanning = !m_isSplitting && (event->buttons() & (Qt::LeftButton | Qt::MiddleButton)) != 0;
    if (m_isPanning && !m_original.image.isNull()) {
        setCursor(Qt::ClosedHandCursor);
    }
}

void ImageComparison::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF position = event->position();
    if (m_isSplitting) {
        m_split = std::clamp(position.x() / std::max(1, width()), 0.0, 1.0);
        update();
    } else if (m_isDrawing) {
        const QPoint end = PixelAt(m_original, position);
        SetArea(QRect(QPoint(std::min(m_areaStart.x(), end.x()), std::min(m_areaStart.y(), end.y())),
                      QPoint(std::max(m_areaStart.x(), end.x()), std::max(m_areaStart.y(), end.y())))
                    .intersected(QRect({}, m_original.wholeSize)));
    } else if (m_isPanning) {
        PanBy(position - m_last);
    } else {
        setCursor(IsNearSplit(position) ? Qt::SplitHCursor : m_drawsArea ? Qt::CrossCursor : Qt::ArrowCursor);
    }
    m_last = position;
    ShowPixel(position);
}

void ImageComparison::mouseReleaseEvent(QMouseEvent* /*event*/)
{
    if (m_isDrawing && !m_area.isEmpty()) {
        emit AreaDrawn(m_area);
    }
    m_isPanning = m_isSplitting = m_isDrawing = false;
    unsetCursor();
}

void ImageComparison::mouseDoubleClickEvent(QMouseEvent* /*event*/)
{
    FitToWindow();
}

void ImageComparison::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        return PanBy({PanStep, 0});
    case Qt::Key_Right:
        return PanBy({-PanStep, 0});
    case Qt::Key_Up:
        return PanBy({0, PanStep});
    case Qt::Key_Down:
        return PanBy({0, -PanStep});
    default:
        QWidget::keyPressEvent(event);
    }
}

void ImageComparison::leaveEvent(QEvent* /*event*/)
{
    emit Hovered({});
}
