#include "apps/viewer/MainWindow.h"

MainWindow::MainWindow() = default;
MainWindow::~MainWindow() = default;
