#pragma once

#include <QDialog>

class QCheckBox;
class QLineEdit;

/// The import options that are the viewer's own: polylines, and where textures are written. Remembered.
class ImportOptionsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ImportOptionsDialog(QWidget* parent);

    void accept() override;

private:
    QCheckBox* m_polylines;
    QCheckBox* m_keepTextures;
    QLineEdit* m_textureFolder;
};
