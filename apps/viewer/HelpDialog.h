#pragma once

#include <QDialog>

class QAction;

/// What mouse and keys do: the view's own, and the actions' shortcuts as they are.
class HelpDialog : public QDialog
{
    Q_OBJECT

public:
    HelpDialog(const QList<QAction*>& actions, QWidget* parent);
};
