// How long the add-on takes to follow the contact manager: another client moves corvalent-contacts to the next
// contact of a database of a million, and the add-on, told by OnContactPosChange, reads the current contact as a
// capture does (GetActive.Type, Views.Create(1, "CV"), ten GetField), all over the session bus.
//
// It starts its own corvalent-contacts, so it needs a session bus and no other corvalent-contacts on it; run it on
// a private one:
//
//   dbus-run-session -- build/bench/bench_host_event [DATABASE [ROUNDS]]
//
// DATABASE is written with --generate 1000000 into a temporary folder when not given (under a minute; pass a file
// made once with `corvalent-contacts --generate 1000000 FILE` to skip that). Prints the median and spread.

#include "Percentile.h"
#include "act/DBusBackend.h"
#include "common/Error.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

using namespace corvalent;
using namespace corvalent::dbuswire;

using corvalent::bench::percentile;

namespace {

const qint16 kTenFields[] = {26, 25, 27, 30, 31, 32, 33, 35, 37, 40};

QString contactsProgram()
{
    const QString set = qEnvironmentVariable("CORVALENT_CONTACTS");
    return set.isEmpty() ? QStringLiteral(CORVALENT_CONTACTS_PATH) : set;
}

[[noreturn]] void fail(const QString& why)
{
    std::fprintf(stderr, "bench_host_event: %s\n", qPrintable(why));
    std::exit(1);
}

// Runs the event loop until `done` holds or the time is up.
bool waitFor(const std::function<bool()>& done, int ms)
{
    const QDeadlineTimer deadline(ms);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QEventLoop loop;
        QTimer::singleShot(5, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const int rounds = args.size() > 1 ? args.at(1).toInt() : 300;
    if (rounds < 1)
        fail(QStringLiteral("ROUNDS must be 1 or more"));
    if (!QDBusConnection::sessionBus().isConnected())
        fail(QStringLiteral("no session bus; run under dbus-run-session"));
    if (QDBusConnection::sessionBus().interface()->isServiceRegistered(kBusName))
        fail(QStringLiteral("a corvalent-contacts already runs on this bus"));

    QTemporaryDir dir;
    QString database = args.value(0);
    if (database.isEmpty()) {
        database = dir.filePath(QStringLiteral("Million.cvdb"));
        std::fprintf(stderr, "writing a million contacts...\n");
        QElapsedTimer writing;
        writing.start();
        const int code = QProcess::execute(contactsProgram(), {QStringLiteral("--generate"), QStringLiteral("1000000"), database});
        if (code != 0)
            fail(QStringLiteral("--generate failed with %1").arg(code));
        std::fprintf(stderr, "written in %.1f s\n", double(writing.elapsed()) / 1000.0);
    }

    QProcess host;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
    host.setProcessEnvironment(env);
    host.setProcessChannelMode(QProcess::ForwardedChannels);
    QElapsedTimer opening;
    opening.start();
    host.start(contactsProgram(), {database});
    if (!waitFor([] { return QDBusConnection::sessionBus().interface()->isServiceRegistered(kBusName).value(); },
                 300000)) {
        host.kill();
        host.waitForFinished();
        fail(QStringLiteral("corvalent-contacts did not come up"));
    }

    int exitCode = 0;
    try {
        DBusBackend addOn;
        const AutomationPtr views = toObject(addOn.create(kProgIdApp)->invoke(QStringLiteral("Views")));
        // The first answer comes once the database is open and the window shown.
        views->invoke(QStringLiteral("GetActive"));
        std::fprintf(stderr, "corvalent-contacts answered %.1f s after its start\n", double(opening.elapsed()) / 1000.0);

        DBusBackend mover(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("mover")));
        const AutomationPtr contact = toObject(mover.create(kProgIdDatabase)->invoke(QStringLiteral("Contact")));
        const AutomationPtr moverView = toObject(toObject(mover.create(kProgIdApp)->invoke(QStringLiteral("Views")))
                                                     ->invoke(QStringLiteral("Create"), {qint16(1), QStringLiteral("CV")}));
        qint64 nextId = moverView->invoke(QStringLiteral("GetCurrentID")).toLongLong();

        QElapsedTimer clock;
        clock.start();
        qint64 signalledAt = 0, readAt = 0;
        int captures = 0;
        QString lastName;
        QObject::connect(&addOn.events(), &HostEvents::OnContactPosChange, &app, [&](const QString&) {
            signalledAt = clock.nsecsElapsed();
            const AutomationPtr active = toObject(views->invoke(QStringLiteral("GetActive")));
            if (active->invoke(QStringLiteral("Type")).toInt() != 2)
                throw Error(ErrorNumber::AutomationError, QStringLiteral("the contact view is not active"));
            const AutomationPtr view = toObject(views->invoke(QStringLiteral("Create"), {qint16(1), QStringLiteral("CV")}));
            for (qint16 field : kTenFields) {
                const QString text = view->invoke(QStringLiteral("GetField"), {field}).toString();
                if (field == 26)
                    lastName = text;
            }
            readAt = clock.nsecsElapsed();
            ++captures;
        });

        const int warmUp = 10;
        std::vector<double> total, toEvent;
        for (int round = 0; round < warmUp + rounds; ++round) {
            const int before = captures;
            const qint64 start = clock.nsecsElapsed();
            contact->invoke(QStringLiteral("GoTo"), {QString::number(++nextId)});
            if (!waitFor([&] { return captures > before; }, 30000))
                throw Error(ErrorNumber::AutomationError,
                            QStringLiteral("no OnContactPosChange for contact %1").arg(nextId));
            if (round >= warmUp) {
                total.push_back(double(readAt - start) / 1e6);
                toEvent.push_back(double(signalledAt - start) / 1e6);
            }
        }
        std::printf("host event to ten fields read: %d rounds on %s (last contact read: %s)\n", rounds,
                    qPrintable(QFileInfo(database).fileName()), qPrintable(lastName));
        std::printf("  median %.2f ms   p10 %.2f ms   p90 %.2f ms   max %.2f ms\n", percentile(total, 0.5),
                    percentile(total, 0.1), percentile(total, 0.9), percentile(total, 1.0));
        std::printf("  of which GoTo until the event is handled: median %.2f ms\n", percentile(toEvent, 0.5));

        // For scale: one call with its answer, the unit the capture above is made of.
        std::vector<double> single;
        for (int round = 0; round < rounds; ++round) {
            const qint64 start = clock.nsecsElapsed();
            moverView->invoke(QStringLiteral("GetCurrentID"));
            single.push_back(double(clock.nsecsElapsed() - start) / 1e6);
        }
        std::printf("one call and its answer (GetCurrentID): median %.3f ms\n", percentile(single, 0.5));
    } catch (const Error& e) {
        std::fprintf(stderr, "bench_host_event: Error %d: %s\n", e.number(), qPrintable(e.description()));
        exitCode = 1;
    }
    host.kill();
    host.waitForFinished();
    return exitCode;
}
