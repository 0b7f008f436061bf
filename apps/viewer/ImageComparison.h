#pragma once

#include <QImage>
#include <QWidget>

/// Two pictures beside each other, or one over the other with a border that can be dragged, with one zoom and
/// one place for both. Transparency shows a chequered ground.
class ImageComparison : public QWidget
{
    Q_OBJECT

public:
    enum Mode
    {
        SideBySide,
        Split,
    };

    explicit ImageComparison(QWidget* parent = nullptr);

    /// The picture before; null for none. A picture of another size is fitted into the window.
    void SetOriginal(const QImage& image, const QString& title);

    /// The picture after. `wholeSize` is the size that it stands for: that of `image` unless it is reduced.
    void SetResult(const QImage& image, QSize wholeSize, const QString& title);

    /// The size for which the result stands.
    QSize ResultSize() const { return m_result.wholeSize; }

    void SetMode(Mode mode);
    Mode CurrentMode() const { return m_mode; }

    /// Shows the result three times in each direction, as it meets itself on a tiled surface.
    void SetTiled(bool on);
    /// While on, dragging with the left button draws an area on a picture instead of moving it.
    void SetDrawsArea(bool on);
    /// Marks an area of the original, in its pixels; an empty one: none.
    void SetArea(const QRect& area);

    /// Screen pixels for a picture's pixel.
    double Zoom() const { return m_zoom; }
    void ZoomBy(double factor);
    void FitToWindow();
    void ActualSize();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// The cursor is over this pixel of the original and of the result; empty when it is over neither.
    void Hovered(const QString& text);
    void ZoomChanged(double zoom);
    /// The user drew an area, within the original, in its pixels.
    void AreaDrawn(const QRect& area);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    /// A picture, and the smaller copy of it that is drawn when the zoom is far below one.
    struct Picture
    {
        QImage image;
        QSize wholeSize;
        QString title;
        QImage small;
        int smallLevel = 0;
    };

    QRect PaneOf(const Picture& picture) const; ///< The whole widget when the pictures are split.
    QRectF TargetOf(const Picture& picture) const;
    QPoint PixelAt(const Picture& picture, QPointF position) const;
    QString PixelText(const Picture& picture, QPointF position) const;
    int SplitX() const;
    bool IsNearSplit(QPointF position) const;
    void Draw(QPainter& painter, Picture& picture, const QRectF& target, const QRect& clip);
    void DrawTiles(QPainter& painter, const QRect& clip);
    void DrawArea(QPainter& painter, const QRect& clip) const;
    void DrawTitle(QPainter& painter, const Picture& picture, const QRect& clip, Qt::Alignment side) const;
    const QImage& ImageFor(Picture& picture, double scale) const;
    void SetZoom(double zoom, QPointF anchor);
    void PanBy(QPointF screen);
    void ShowPixel(QPointF position);

    Picture m_original;
    Picture m_result;
    Mode m_mode = SideBySide;
    double m_zoom = 1.0;
    bool m_isFitted = true;
    QPointF m_center = {0.5, 0.5}; ///< What stands in the middle of a pane, as part of the picture's size.
    double m_split = 0.5;
    QPointF m_last;
    bool m_isPanning = false;
    bool m_isSplitting = false;
    bool m_isTiled = false;
    bool m_drawsArea = false;
    bool m_isDrawing = false;
    QPoint m_areaStart;
    QRect m_area;
};
