#pragma once

#include "apps/viewer/ImageOperations.h"

#include <QWidget>

class QFormLayout;

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

signals:
    /// The user changed a value.
    void Changed();

private:
    QWidget* MakeEditor(std::size_t index, const ImageParameter& parameter);
    QWidget* MakeNumber(std::size_t index, const ImageParameter& parameter);
    void SetValue(std::size_t index, double value);

    ImageValues m_values;
    QWidget* m_form = nullptr; ///< Made anew for each operation.
};
