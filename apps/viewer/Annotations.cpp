#include "apps/viewer/Annotations.h"

#include <QPainter>

#include <algorithm>

Annotations::Annotations(QWidget* parent, Project project) : QWidget(parent), m_project(std::move(project))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void Annotations::Set(std::vector<Annotation> entries)
{
    m_entries = std::move(entries);
    update();
}

void Annotations::SetHint(const QString& hint)
{
    m_hint = hint;
    update();
}

void Annotations::DrawLabel(QPainter& painter, const QPointF& place, const QString& text)
{
    const int margin = fontMetrics().height() / 4;
    QRectF box = fontMetrics().boundingRect(text);
    box.moveCenter(place);
    box.adjust(-2 * margin, -margin, 2 * margin, margin);
    // Within the view as far as it has room.
    box.moveRight(std::min(box.right(), width() - 1.0));
    box.moveLeft(std::max(box.left(), 1.0));
    box.moveBottom(std::min(box.bottom(), height() - 1.0));
    box.moveTop(std::max(box.top(), 1.0));
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::ToolTipBase));
    painter.drawRoundedRect(box, margin, margin);
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.drawText(box, Qt::AlignCenter, text);
}

void Annotations::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor accent(0xe6, 0x4a, 0x19);
    for (const Annotation& entry : m_entries) {
        QPolygonF line;
        for (const Vec3& point : entry.points) {
            if (const std::optional<QPointF> place = m_project(point)) {
                line << *place;
            }
        }
        if (line.isEmpty()) {
            continue;
        }
        for (const auto& [color, width] :
             {std::pair(QColor(255, 255, 255, 200), 4.0), std::pair(accent, 1.8)}) {
            painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
            painter.setBrush(Qt::NoBrush);
            painter.drawPolyline(line);
            painter.setBrush(color);
            for (const QPointF& place : line) {
                painter.drawEllipse(place, 2.0, 2.0);
            }
        }
        const QPointF middle = 0.5 * (line.first() + line.last());
        DrawLabel(painter, middle - QPointF(0, fontMetrics().height()), entry.text);
    }
    if (!m_hint.isEmpty()) {
        DrawLabel(painter, QPointF(0.5 * width(), 1.2 * fontMetrics().height()), m_hint);
    }
}
