// corvalent: the add-on window beside the contact manager.

#include "act/DBusBackend.h"
#include "app/MainWindow.h"

#include <QApplication>

using namespace corvalent;

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvalent"));
    QApplication::setDesktopFileName(QStringLiteral("corvalent"));
    // The window may close while a restart of the contact manager still has to run to its end.
    app.setQuitOnLastWindowClosed(false);

    DBusBackend backend;
    MainWindow window(backend);
    if (!window.Form_Load())
        return 1;
    QObject::connect(&window.follower(), &HostFollower::endProgram, &app, [] { QCoreApplication::exit(0); });
    QObject::connect(&window, &MainWindow::unloaded, &app, [&window] {
        if (!window.follower().tmr1.isActive())
            QCoreApplication::exit(0);
    });
    window.show();
    return app.exec();
}
