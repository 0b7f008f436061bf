#pragma once

#include "apps/shared/Exchange.h"

#include <QDialog>

class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;

/// Asks where to and how a document is exported: the format, the length unit, how JT is split or GLB
/// packed, and the file. Remembers format, unit and packing.
class ExportDialog : public QDialog
{
    Q_OBJECT

public:
    /// `sourceFile`: what the document was imported from, which gives the proposed name.
    ExportDialog(const QString& sourceFile, QWidget* parent);

    QString File() const;
    void SetFile(const QString& file);
    ExportSettings Settings() const;

    /// Asks before an existing file is overwritten.
    void accept() override;

private:
    void FillChoices();
    void Arrange();
    const FormatEntry& Format() const;
    void UseFormat();
    void UseExtension();
    void Browse();
    void Check();
    void Done();

    QLineEdit* m_file;
    QComboBox* m_format;
    QComboBox* m_unit;
    QComboBox* m_jtSplit;
    QComboBox* m_packing;
    QLabel* m_packingLabel;
    QLabel* m_jtLabel;
    QDialogButtonBox* m_buttons;
};
