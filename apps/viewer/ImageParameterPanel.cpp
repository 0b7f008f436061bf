#include "apps/viewer/ImageParameterPanel.h"

#include "apps/images/ImageFile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>

namespace {

/// Positions of a slider over a range of numbers with a fraction.
constexpr int SliderSteps = 1000;

} // namespace

ImageParameterPanel::ImageParameterPanel(QWidget* parent) : QWidget(parent)
{
    new QVBoxLayout(this);
    layout()->setContentsMargins(0, 0, 0, 0);
}

void ImageParameterPanel::SetOperation(const ImageOperation* operation, QSize size)
{
    delete m_form;
    m_form = new QWidget;
    layout()->addWidget(m_form);
    m_values = operation != nullptr ? operation->Defaults(size) : ImageValues();
    auto* form = new QFormLayout(m_form);
    form->setContentsMargins(0, 0, 0, 0);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    m_second = {};
    if (operation != nullptr && operation->second != nullptr) {
        form->addRow(tr("%1:").arg(ImageOperationText(operation->second)), MakeSecond(*operation));
    }
    for (std::size_t i = 0; operation != nullptr && i < m_values.size(); ++i) {
        const ImageParameter& parameter = operation->parameters[i];
        QWidget* editor = MakeEditor(i, parameter);
        const QString name = ImageOperationText(parameter.name);
        form->addRow(parameter.kind == ImageParameter::Switch ? QString() : tr("%1:").arg(name), editor);
    }
    m_form->show();
}

QWidget* ImageParameterPanel::MakeSecond(const ImageOperation& operation)
{
    const QString title = ImageOperationText(operation.second);
    auto* button = new QPushButton(tr("Choose ..."));
    button->setObjectName(QStringLiteral("second"));
    m_secondName = new QLabel;
    m_secondName->setWordWrap(true);
    connect(button, &QPushButton::clicked, this, [this, title] {
        const QString file = QFileDialog::getOpenFileName(this, title, {}, ReadableImages());
        if (!file.isEmpty()) {
            SetSecond(file);
        }
    });
    auto* row = new QWidget;
    auto* rowLayout = new QHBoxLayout(row);
    rowLayout->setContentsMargins(0, 0, 0, 0);
    rowLayout->addWidget(button);
    rowLayout->addWidget(m_secondName, 1);
    return row;
}

bool ImageParameterPanel::SetSecond(const QString& file)
{
    const ImageFile picture = ReadImageFile(file);
    m_secondName->setText(picture.image.isNull() ? picture.failure : QFileInfo(file).fileName());
    if (picture.image.isNull()) {
        return false;
    }
    m_second = picture.image;
    emit Changed();
    return true;
}

void ImageParameterPanel::SetArea(const QRect& area)
{
    const int numbers[] = {area.width(), area.height(), area.left(), area.top()};
    const QList<QDoubleSpinBox*> boxes = m_form->findChildren<QDoubleSpinBox*>();
    for (int i = 0; i < std::min<int>(4, static_cast<int>(boxes.size())); ++i) {
        boxes[i]->setValue(numbers[i]);
    }
}

QWidget* ImageParameterPanel::MakeEditor(std::size_t index, const ImageParameter& parameter)
{
    if (parameter.kind == ImageParameter::Switch) {
        auto* box = new QCheckBox(ImageOperationText(parameter.name));
        box->setObjectName(parameter.name);
        box->setToolTip(ImageOperationText(parameter.help));
        box->setChecked(m_values[index] != 0);
        connect(box, &QCheckBox::toggled, this, [this, index](bool isOn) { SetValue(index, isOn ? 1 : 0); });
        return box;
    }
    if (parameter.kind == ImageParameter::Choice) {
        auto* box = new QComboBox;
        box->setObjectName(parameter.name);
        box->setToolTip(ImageOperationText(parameter.help));
        box->addItems(ImageOperationText(parameter.choices).split('|'));
        box->setCurrentIndex(int(m_values[index]));
        connect(box, &QComboBox::currentIndexChanged, this, [this, index](int row) { SetValue(index, row); });
        return box;
    }
    return MakeNumber(index, parameter);
}

QWidget* ImageParameterPanel::MakeNumber(std::size_t index, const ImageParameter& parameter)
{
    const double range = parameter.most - parameter.least;
    const bool isWhole = parameter.kind != ImageParameter::Number;
    auto* box = new QDoubleSpinBox;
    box->setObjectName(parameter.name);
    box->setDecimals(isWhole ? 0 : range > 10 ? 1 : 2);
    box->setRange(parameter.least, parameter.most);
    box->setSingleStep(isWhole || range > 10 ? 1 : 0.05);
    box->setValue(m_values[index]);
    const QString pixels = tr("px", "pixels");
    const bool isSide = parameter.kind == ImageParameter::Width || parameter.kind == ImageParameter::Height;
    box->setSuffix(isSide ? QStringLiteral(" ") + pixels : QString());
    box->setToolTip(tr("%1 (%2 to %3)")
                        .arg(ImageOperationText(parameter.help), box->textFromValue(parameter.least),
                             box->textFromValue(parameter.most)));
    connect(box, &QDoubleSpinBox::valueChanged, this,
            [this, index](double value) { SetValue(index, value); });
    if (isSide) {
        return box;
    }
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setAccessibleName(ImageOperationText(parameter.name));
    slider->setToolTip(box->toolTip());
    const double step = isWhole ? 1 : range / SliderSteps;
    slider->setRange(0, int(std::lround(range / step)));
    slider->setPageStep(std::max(slider->maximum() / 10, 1));
    const auto follow = [=](double value) {
        const QSignalBlocker blocker(slider);
        slider->setValue(int(std::lround((value - parameter.least) / step)));
    };
    follow(box->value());
    connect(box, &QDoubleSpinBox::valueChanged, slider, follow);
    connect(slider, &QSlider::valueChanged, box,
            [=](int position) { box->setValue(parameter.least + position * step); });

    auto* row = new QWidget;
    auto* rowLayout = new QHBoxLayout(row);
    rowLayout->setContentsMargins(0, 0, 0, 0);
    rowLayout->addWidget(slider, 1);
    rowLayout->addWidget(box);
    return row;
}

void ImageParameterPanel::SetValue(std::size_t index, double value)
{
    m_values[index] = value;
    emit Changed();
}
