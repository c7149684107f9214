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
constexpr int kToolMs = 15000;   // one xdotool command

// Runs xdotool and answers its output; nothing when it failed or hung.
inline std::optional<QString> xdotool(const QStringList& args, bool quiet = false)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), args);
    if (!tool.waitForFinished(kToolMs)) {
        tool.kill();
        tool.waitForFinished();
        qWarning("xdotool %s: no answer", qPrintable(args.join(u' ')));
        return std::nullopt;
    }
    if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
        if (!quiet)
            qWarning("xdotool %s: %s", qPrintable(args.join(u' ')), tool.readAllStandardError().constData());
        return std::nullopt;
    }
    return QString::fromUtf8(tool.readAllStandardOutput());
}

// What keeps this process from driving programs on an X server with a session bus of their own; "" when nothing.
inline QString missingForX11Session()
{
    if (QDBusConnection::sessionBus().isConnected() && hostOnBus())
        return QStringLiteral("a contact manager already serves on this session bus");
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return QStringLiteral("needs an X server: run under scripts/x11-session.sh");
    if (!QDBusConnection::sessionBus().isConnected())
        return QStringLiteral("needs a session bus: run under scripts/x11-session.sh");
    if (!xdotool({QStringLiteral("version")}))
        return QStringLiteral("xdotool is missing");
    return QString();
}

// xdotool's search for the windows on screen of the process whose title matches; --all, or any one of the
// conditions would do.
inline QStringList onScreen(const QProcess& process, const QString& titlePattern)
{
    return {QStringLiteral("search"), QStringLiteral("--all"), QStringLiteral("--onlyvisible"),
            QStringLiteral("--pid"),  QString::number(process.processId()), QStringLiteral("--name"),
            titlePattern};
}

// The first mapped window of the process whose title matches, as it is now; empty when there is none.
inline QString windowNow(const QProcess& process, const QString& titlePattern)
{
    return xdotool(onScreen(process, titlePattern), true).value_or(QString()).section(u'\n', 0, 0).trimmed();
}

// The first mapped window of the process whose title matches, once there is one; empty after `ms` or when the
// process ended.
inline QString waitForWindow(const QProcess& process, const QString& titlePattern, int ms = kWindowMs)
{
    QString window;
    const bool ended = QTest::qWaitFor(
        [&] {
            if (process.state() != QProcess::Running)
                return true;
            window = windowNow(process, titlePattern);
            return !window.isEmpty();
        },
        ms);
    return ended ? window : QString();
}

// Whether the process has no mapped window whose title matches within `ms`.
inline bool waitForNoWindow(const QProcess& process, const QString& titlePattern, int ms = kWindowMs)
{
    return QTest::qWaitFor([&] { return windowNow(process, titlePattern).isEmpty(); }, ms);
}

// The titles of the process's windows on screen, one per window: a message box shows up here.
inline QStringList windowTitles(const QProcess& process)
{
    const QString titles =
        xdotool(onScreen(process, QStringLiteral(".")) << QStringLiteral("getwindowname") << QStringLiteral("%@"),
                true)
            .value_or(QString());
    QStringList list = titles.split(u'\n', Qt::SkipEmptyParts);
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

// Whether the program ended by itself; if not, why not, as far as its windows tell.
inline bool endsCleanly(QProcess& process, QByteArray& why)
{
    if (process.waitForFinished(kWindowMs)) {
        why = "it crashed";
        return process.exitStatus() == QProcess::NormalExit;
    }
    why = "it still runs; its windows: " + windowTitles(process).join(QStringLiteral(", ")).toUtf8();
    return false;
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
    return startHost(host, {database}) ? waitForWindow(host, QStringLiteral("^Corvalent Contacts")) : QString();
}

// Starts the add-on (CORVALENT_ADDON) and answers its window once it shows; empty when it does not.
inline QString startAddonWindow(QProcess& addon, const QProcessEnvironment& env)
{
    addon.setProcessEnvironment(env);
    addon.setProcessChannelMode(QProcess::ForwardedChannels);
    addon.start(qEnvironmentVariable("CORVALENT_ADDON"), {});
    return addon.waitForStarted() ? waitForWindow(addon, QStringLiteral("^Corvalent$")) : QString();
}

inline void stop(QProcess& process)
{
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
    }
}

} // namespace corvalent::test
