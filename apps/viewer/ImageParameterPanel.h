#pragma once

#include "apps/images/ImageOperations.h"

#include <QWidget>

class QFormLayout;
class QLabel;

/// Boxes and sliders for the parameters of one operation at a time. Each box has its parameter's name as
/// object name.
class ImageParameterPanel : public QWidget
{
    Q_OBJECT

public:
    explicit ImageParameterPanel(QWidget* parent = nullptr);

    /// Shows the operation's parameters with their defaults for a picture of this size; null shows none.
    void SetOperation(const ImageOperation* operation, QSize size);

    /// One value for each parameter.
    const ImageValues& Values() const { return m_values; }

    /// Sets the first four values to an area: width, height, left, top.
    void SetArea(const QRect& area);

    /// Takes the second picture of an operation on two from a file; false, with the reason beside the button,
    /// when it cannot be read.
    bool SetSecond(const QString& file);
    /// Null while none is chosen.
    const QImage& Second() const { return m_second; }

signals:
    /// The user changed a value.
    void Changed();

private:
    QWidget* MakeSecond(const ImageOperation& operation);
    QWidget* MakeEditor(std::size_t index, const ImageParameter& parameter);
    QWidget* MakeNumber(std::size_t index, const ImageParameter& parameter);
    void SetValue(std::size_t index, double value);

    ImageValues m_values;
    QImage m_second;
    QLabel* m_secondName = nullptr; ///< With the form.
    QWidget* m_form = nullptr;      ///< Made anew for each operation.
};
