#pragma once

#include <QPlainTextEdit>

/// The lines that the program and the library wrote on standard error, each with its time. Kept to the last
/// thousands.
class LogPanel : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit LogPanel(QWidget* parent = nullptr);

    void Append(const QStringList& lines);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
};
