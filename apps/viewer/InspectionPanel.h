#pragma once

#include "apps/viewer/SectionPlane.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QSlider;

/// The controls of the section plane and of the exploded view.
class InspectionPanel : public QWidget
{
    Q_OBJECT

public:
    explicit InspectionPanel(QWidget* parent = nullptr);

    /// Shows values without telling of them.
    void Show(const SectionPlane& section, double explosion);
    SectionPlane Section() const;
    /// 0 to 2, as `ExplodedWays` takes it.
    double Explosion() const;

signals:
    void SectionChanged();
    void ExplosionChanged();

private:
    QCheckBox* m_on;
    QComboBox* m_axis;
    QSlider* m_position;
    QCheckBox* m_flipped;
    QSlider* m_explosion;
};
