#pragma once

#include <QWidget>

/// A tool window over the image utilities: a picture beside what an operation makes of it.
class ImageWindow : public QWidget
{
    Q_OBJECT

public:
    explicit ImageWindow(QWidget* parent = nullptr);
    ~ImageWindow() override;

    /// Shows a picture file; false, with the reason in the window, when it cannot be read.
    bool Load(const QString& file);
};
