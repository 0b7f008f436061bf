#pragma once

#include <QMainWindow>

/// The viewer's window.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;
};
