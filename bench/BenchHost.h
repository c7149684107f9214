#pragma once

// A corvalent-contacts of the bench's own on the session bus, for the benches that run the add-on against it.

#include "common/DBusWire.h"
#include "common/Prompter.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QProcess>
#include <QString>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace corvalent::bench {

// Runs the event loop until `done` holds or the time is up.
inline bool waitFor(const std::function<bool()>& done, int ms)
{
    const QDeadlineTimer deadline(ms);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QEventLoop loop;
        QTimer::singleShot(1, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

class BenchHost {
public:
    // `name` prefixes the messages of fail().
    explicit BenchHost(const char* name) : m_name(name) {}
    ~BenchHost() { stop(); }

    static QString program()
    {
        const QString set = qEnvironmentVariable("CORVALENT_CONTACTS");
        return set.isEmpty() ? QStringLiteral(CORVALENT_CONTACTS_PATH) : set;
    }

    // Starts it on `database` and waits until it owns its bus name; fails the bench when it cannot.
    void start(const QString& database, const QProcessEnvironment& environment)
    {
        if (!QDBusConnection::sessionBus().isConnected())
            fail(QStringLiteral("no session bus; run under dbus-run-session"));
        if (QDBusConnection::sessionBus().interface()->isServiceRegistered(dbuswire::kBusName))
            fail(QStringLiteral("a corvalent-contacts already runs on this bus"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(program(), {database});
        if (!waitFor([] { return QDBusConnection::sessionBus().interface()->isServiceRegistered(dbuswire::kBusName)
                                     .value(); },
                     300000))
            fail(QStringLiteral("corvalent-contacts did not come up"));
    }

    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished();
    }

    // Prints why, stops the contact manager (it would outlive its bus otherwise) and ends the bench.
    [[noreturn]] void fail(const QString& why)
    {
        std::fprintf(stderr, "%s: %s\n", m_name, qPrintable(why));
        stop();
        std::exit(1);
    }

private:
    const char* m_name;
    QProcess m_process;
};

// An error box in the middle of a measured path would make the figures those of a failure: it ends the bench.
class FailingPrompter : public ConsolePrompter {
public:
    explicit FailingPrompter(BenchHost& host) : m_host(host) {}
    int message(const QString& text, int, const QString&) override
    {
        m_host.fail(QStringLiteral("message box: ") + text);
    }

private:
    BenchHost& m_host;
};

} // namespace corvalent::bench
