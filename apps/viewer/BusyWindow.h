#pragma once

#include <QDialog>

class QLabel;

/// Says what the program is at while it can answer to nothing else: the file's name and the stage. It is
/// painted before the work begins, because nothing is painted during it; so it counts no per cents, which it
/// could not know.
///
///     BusyWindow busy(this, tr("Importing pump.step"));
///     busy.ShowStage(tr("Reading and meshing ..."));
///     document = reader.Import(file);
class BusyWindow : public QDialog
{
    Q_OBJECT

public:
    BusyWindow(QWidget* parent, const QString& title);

    /// Shows the stage and returns when it stands on the screen.
    void ShowStage(const QString& text);

    /// Esc does not stop what cannot be stopped.
    void reject() override {}

private:
    QLabel* m_stage;
};
