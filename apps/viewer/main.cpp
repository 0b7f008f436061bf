// zemtar-viewer: a small desktop host that shows what the library does.

#include "apps/viewer/MainWindow.h"

#include <QApplication>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    MainWindow window;
    window.show();
    return QApplication::exec();
}
