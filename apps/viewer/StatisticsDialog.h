#pragma once

#include "apps/viewer/BillOfMaterials.h"

#include <QDialog>

class QTableWidget;

/// The numbers of a document and its bill of materials, which can be saved as CSV.
class StatisticsDialog : public QDialog
{
    Q_OBJECT

public:
    /// `sourceFile` gives the proposed name of the CSV file. The list is read now and not kept.
    StatisticsDialog(const NodeList& nodes, const QString& sourceFile, QWidget* parent);

    /// Writes the file, whole or not at all; gives an empty text, or why not.
    QString Save(const QString& file) const;

signals:
    /// The user double-clicked a line: the position of its first part in the list.
    void Chosen(int position);

private:
    void FillTable();
    void AskWhereToSave();

    BillOfMaterials m_bill;
    QString m_sourceFile;
    QTableWidget* m_table;
};
