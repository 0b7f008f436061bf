#pragma once

#include "apps/geometry/Vector.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

/// A line in the world with a text at its middle.
struct Annotation
{
    std::vector<Vec3> points;
    QString text;
};

/// Draws lines and texts over a 3D view, whose child it is; it takes no input.
class Annotations : public QWidget
{
    Q_OBJECT

public:
    /// `project` gives the place of a point of the world in the widget; none for one behind the eye.
    using Project = std::function<std::optional<QPointF>(const Vec3&)>;

    Annotations(QWidget* parent, Project project);

    void Set(std::vector<Annotation> entries);
    /// A line of text at the top: what the user may do now. Empty: none.
    void SetHint(const QString& hint);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void DrawLabel(QPainter& painter, const QPointF& place, const QString& text);

    Project m_project;
    std::vector<Annotation> m_entries;
    QString m_hint;
};
