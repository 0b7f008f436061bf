#include "apps/viewer/InspectionPanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QSignalBlocker>
#include <QSlider>

namespace {

constexpr int Steps = 1000;
constexpr double MostExploded = 2.0;

QSlider* MakeSlider(QWidget* parent, const char* name, const QString& toolTip)
{
    auto* slider = new QSlider(Qt::Horizontal, parent);
    slider->setObjectName(QString::fromLatin1(name));
    slider->setRange(0, Steps);
    slider->setPageStep(Steps / 20);
    slider->setToolTip(toolTip);
    return slider;
}

} // namespace

InspectionPanel::InspectionPanel(QWidget* parent)
    : QWidget(parent),
      m_on(new QCheckBox(tr("Se&ction plane"), this)),
      m_axis(new QComboBox(this)),
      m_position(MakeSlider(this, "sectionPosition", tr("Where the model is cut"))),
      m_flipped(new QCheckBox(tr("Keep the &other side"), this)),
      m_explosion(MakeSlider(this, "explosion", tr("How far the parts stand apart")))
{
    m_on->setObjectName(QStringLiteral("sectionOn"));
    m_axis->setObjectName(QStringLiteral("sectionAxis"));
    m_axis->addItems({tr("across X"), tr("across Y"), tr("across Z")});
    auto* form = new QFormLayout(this);
    form->addRow(m_on);
    form->addRow(tr("&Direction:"), m_axis);
    form->addRow(tr("&Position:"), m_position);
    form->addRow(m_flipped);
    form->addRow(tr("&Exploded:"), m_explosion);
    connect(m_on, &QCheckBox::toggled, this, &InspectionPanel::SectionChanged);
    connect(m_flipped, &QCheckBox::toggled, this, &InspectionPanel::SectionChanged);
    connect(m_axis, &QComboBox::currentIndexChanged, this, &InspectionPanel::SectionChanged);
    connect(m_position, &QSlider::valueChanged, this, &InspectionPanel::SectionChanged);
    connect(m_explosion, &QSlider::valueChanged, this, &InspectionPanel::ExplosionChanged);
    Show({}, 0.0);
}

void InspectionPanel::Show(const SectionPlane& section, double explosion)
{
    const QSignalBlocker silent(this);
    m_on->setChecked(section.on);
    m_axis->setCurrentIndex(section.axis);
    m_position->setValue(static_cast<int>(section.position * Steps));
    m_flipped->setChecked(section.flipped);
    m_explosion->setValue(static_cast<int>(explosion / MostExploded * Steps));
}

SectionPlane InspectionPanel::Section() const
{
    return {m_on->isChecked(), m_axis->currentIndex(), static_cast<double>(m_position->value()) / Steps,
            m_flipped->isChecked()};
}

double InspectionPanel::Explosion() const
{
    return MostExploded * m_explosion->value() / Steps;
}
