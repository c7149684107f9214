#pragma once

// Shared by the tests that run corvalent-contacts in its own process on the private bus of dbus-run-session.

#include "act/AutomationBackend.h"
#include "common/DBusWire.h"
#include "support/Raised.h"

#include <QDBusConnectionInterface>
#include <QProcess>
#include <QTest>
#include <functional>
#include <utility>

namespace corvalent::test {

// The ID of the contact manager's current contact, asked as the add-on asks it.
inline qint64 currentContactId(AutomationBackend& backend)
{
    const AutomationPtr views = toObject(backend.create(kProgIdApp)->invoke(QStringLiteral("Views")));
    const AutomationPtr view = toObject(views->invoke(QStringLiteral("Create"), {qint16(1), QStringLiteral("CV")}));
    return view->invoke(QStringLiteral("GetCurrentID")).toLongLong();
}

inline bool hostOnBus()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(dbuswire::kBusName);
}

// Starts corvalent-contacts (CORVALENT_CONTACTS) and answers whether it serves on the bus within a minute.
inline bool startHost(QProcess& host, const QStringList& args)
{
    host.setProcessChannelMode(QProcess::ForwardedChannels);
    host.start(qEnvironmentVariable("CORVALENT_CONTACTS"), args);
    return host.waitForStarted() && QTest::qWaitFor(hostOnBus, 60000);
}

inline void stopHost(QProcess& host)
{
    if (host.state() != QProcess::NotRunning) {
        host.kill();
        host.waitForFinished();
    }
}

struct Finished {
    int code = -1; // also after a crash or a hang
    QString out;
    QString err;
};

inline Finished runToEnd(const QString& program, const QStringList& args,
                         const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(program, args);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace corvalent::test
