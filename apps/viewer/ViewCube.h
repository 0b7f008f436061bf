#pragma once

#include "apps/render/Camera.h"

#include <QPolygonF>
#include <QWidget>

#include <optional>

/// A small cube in a corner of the view, turned as the model is; a click on a side looks at it straight. It
/// draws over an OpenGL widget as that widget's child.
class ViewCube : public QWidget
{
    Q_OBJECT

public:
    explicit ViewCube(QWidget* parent);

    void Turn(const Camera& camera);
    /// The view whose side is drawn at a point of the cube.
    std::optional<StandardView> SideAt(const QPointF& point) const;

signals:
    void Chosen(StandardView view);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    struct Side
    {
        StandardView view;
        QPolygonF corners; ///< from the text's upper left, clockwise
        double facing = 0.0;
    };
    std::vector<Side> VisibleSides() const;

    Vec3 m_right{1, 0, 0};
    Vec3 m_up{0, 0, 1};
    Vec3 m_forward{0, 1, 0};
    std::optional<StandardView> m_hovered;
};
