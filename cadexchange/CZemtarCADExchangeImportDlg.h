#pragma once

#include "common/ZemtarExport.h"

#include <QDialog>
#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class Ui_CZemtarCADExchangeImportDlg;
QT_END_NAMESPACE

namespace Zemtar {

/// Asks the user for the fineness of the mesh and for parallel processing, and remembers both per importer.
///
///     CZemtarCADExchangeImportDlg dialog("STEP", mainWindow);
///     if (dialog.exec() == QDialog::Accepted) {
///         importer.setTessellationFactor(dialog.GetTesselationValue());
///         importer.setUseParallelProcessing(dialog.GetIsParallelProcessing());
///     }
///
/// The values lie in the host's settings store under "Importers/NAME/TesselationValue" (int) and
/// "Importers/NAME/ParallelProcessing" (bool). They are written whenever the dialog is destroyed, also when
/// the user closed it without accepting.
class ZEMTAR_EXPORT CZemtarCADExchangeImportDlg : public QDialog
{
    Q_OBJECT

public:
    /// Builds the dialog, with the values last stored for the importer; `parent` may be null.
    CZemtarCADExchangeImportDlg(QString importerName, QWidget* parent);
    ~CZemtarCADExchangeImportDlg() override;

    /// Shows the stored values; the defaults (50, off) where there are none. Out of range means the nearest.
    void FillDialogData();

    /// Stores the values shown.
    void SaveDialogData();

    /// Fineness of the mesh: 20 (finest) to 95 (coarsest).
    int GetTesselationValue();

    bool GetIsParallelProcessing();

private:
    std::unique_ptr<Ui_CZemtarCADExchangeImportDlg> m_form;
    QString m_importerName;
};

} // namespace Zemtar
