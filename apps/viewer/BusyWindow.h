#pragma once

#include "apps/shared/ExchangeWatch.h"

#include <QDialog>
#include <QElapsedTimer>

class QLabel;
class QProgressBar;
class QPushButton;

/// Follows an import or export: the file's name, the stage with a bar, and Cancel (or Esc). The work runs on
/// the thread of the windows, so each report of its progress lets the windows answer; work that reports
/// nothing for a while holds them up. All other windows of the program are blocked meanwhile.
///
///     BusyWindow busy(this, tr("Importing pump.step"));
///     busy.ShowStage(tr("Reading and meshing ..."));
///     settings.watch = &busy;
///     document = ImportDocument(file, format, settings);
class BusyWindow : public QDialog, public ExchangeWatch
{
    Q_OBJECT

public:
    BusyWindow(QWidget* parent, const QString& title);

    /// Shows a stage whose end is not known, and returns when it stands on the screen.
    void ShowStage(const QString& text);
    /// Takes Cancel away: what comes now is not stopped.
    void EndCancelling();

    void Show(const QString& stage, double fraction) override;
    bool IsCancelled() const override { return m_cancelled; }

    /// Cancel, Esc and the window's close button: asks the work to end, which closes the window.
    void reject() override;

private:
    QLabel* m_stage;
    QProgressBar* m_bar;
    QPushButton* m_cancel;
    bool m_cancelled = false;
};
