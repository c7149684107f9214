// corvalent: the add-on window beside the contact manager.

#include "act/DBusBackend.h"
#include "app/MainWindow.h"

#include <QApplication>
#include <QProcess>

using namespace corvalent;

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvalent"));
    QApplication::setDesktopFileName(QStringLiteral("corvalent"));
    // The window may close while a restart of the contact manager still has to run to its end.
    app.setQuitOnLastWindowClosed(false);

    // Started again after the contact manager was restarted: it takes a moment to come back.
    static const QString kAfterRestart = QStringLiteral("--after-restart");
    constexpr int kRestartWaitMs = 30000;
    DBusBackend backend;
    if (app.arguments().contains(kAfterRestart))
        HostFollower::WaitForHost(backend, kRestartWaitMs);
    MainWindow window(backend);
    if (!window.Form_Load())
        return 1;
    QObject::connect(&window.follower(), &HostFollower::endProgram, &app, [&window] {
        // The add-on comes back beside the restarted contact manager, as a new program that waits for it.
        if (window.follower().RestartPending)
            QProcess::startDetached(QCoreApplication::applicationFilePath(), {kAfterRestart});
        QCoreApplication::exit(0);
    });
    QObject::connect(&window, &MainWindow::unloaded, &app, [&window] {
        if (!window.follower().tmr1.isActive())
            QCoreApplication::exit(0);
    });
    window.show();
    return app.exec();
}
