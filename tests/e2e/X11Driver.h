#pragma once

// Shared by the tests that drive the real programs on an X server (scripts/x11-session.sh): xdotool to find their
// windows and to type into them as a user would.

#include "support/BusSupport.h"

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTest>

#include <optional>

namespace corvalent::test {

constexpr int kWindowMs = 30000; // a window to appear, a program to end

// Runs xdotool and answers its output; nothing when it failed or hung.
inline std::optional<QString> xdotool(const QStringList& args, bool quiet = false)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), args);
    if (!tool.waitForFinished(15000)) {
        tool.kill();
        tool.waitForFinished();
        qWarning("xdotool %s: no answer", qPrintable(args.join(u' ')));
    } else if (tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0) {
        return QString::fromUtf8(tool.readAllStandardOutput());
    } else if (!quiet) {
        qWarning("xdotool %s: %s", qPrintable(args.join(u' ')), tool.readAllStandardError().constData());
    }
    return std::nullopt;
}

// What keeps this process from driving programs on an X server with a session bus of their own; "" when nothing.
inline QString missingForX11Session()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") || !QDBusConnection::sessionBus().isConnected())
        return QStringLiteral("needs an X server and a session bus: run under scripts/x11-session.sh");
    if (hostOnBus())
        return QStringLiteral("a contact manager already serves on this session bus");
    return QString();
}

// xdotool's search for the visible windows whose title matches, of `process` or, without one, of any process
// (programs restarted by others are not the test's children).
inline QStringList onScreen(const QProcess* process, const QString& titlePattern)
{
    QStringList args{QStringLiteral("search"), QStringLiteral("--all"), QStringLiteral("--onlyvisible")};
    if (process)
        args << QStringLiteral("--pid") << QString::number(process->processId());
    return args << QStringLiteral("--name") << titlePattern;
}

// The first such window as it is now; empty when there is none.
inline QString windowNow(const QProcess* process, const QString& titlePattern)
{
    return xdotool(onScreen(process, titlePattern), true).value_or(QString()).section(u'\n', 0, 0).trimmed();
}

// The first such window once there is one; empty after `ms` or when the process ended.
inline QString waitForWindow(const QProcess* process, const QString& titlePattern, int ms = kWindowMs)
{
    QString window;
    (void)QTest::qWaitFor(
        [&] {
            window = windowNow(process, titlePattern);
            return !window.isEmpty() || (process && process->state() != QProcess::Running);
        },
        ms);
    return window;
}

// The titles of the process's windows on screen, sorted: a message box shows up here.
inline QStringList windowTitles(const QProcess& process)
{
    const QStringList args = onScreen(&process, QStringLiteral(".")) << QStringLiteral("getwindowname")
                                                                      << QStringLiteral("%@");
    QStringList list = xdotool(args, true).value_or(QString()).split(u'\n', Qt::SkipEmptyParts);
    list.sort();
    return list;
}

// Keys as the user types them into the window: it is activated first, so that they reach it and nothing else.
inline bool type(const QString& window, const QString& keys)
{
    return xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), window, QStringLiteral("key"),
                    QStringLiteral("--clearmodifiers"), keys})
        .has_value();
}

// The environment of the programs a test starts: the X server's platform, and a home and data folder of their own
// below `folder`.
inline QProcessEnvironment programEnvironment(const QString& folder)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.insert(QStringLiteral("HOME"), folder + QStringLiteral("/user"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), folder + QStringLiteral("/data"));
    return env;
}

// Starts corvalent-contacts on `database` and answers its window once it shows; empty when it does not.
inline QString startHostWindow(QProcess& host, const QProcessEnvironment& env, const QString& database)
{
    host.setProcessEnvironment(env);
    return startHost(host, {database}) ? waitForWindow(&host, QStringLiteral("^Corvalent Contacts")) : QString();
}

// Starts the add-on (CORVALENT_ADDON) and answers its window once it shows; empty when it does not.
inline QString startAddonWindow(QProcess& addon, const QProcessEnvironment& env)
{
    addon.setProcessEnvironment(env);
    addon.setProcessChannelMode(QProcess::ForwardedChannels);
    addon.start(qEnvironmentVariable("CORVALENT_ADDON"), {});
    return addon.waitForStarted() ? waitForWindow(&addon, QStringLiteral("^Corvalent$")) : QString();
}

inline void stop(QProcess& process)
{
    stopHost(process);
}

} // namespace corvalent::test
