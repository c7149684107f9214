// How long the add-on takes to follow the contact manager, the whole way a user's move goes: another client moves
// corvalent-contacts to a random contact of a large database, the contact manager tells the add-on
// (OnContactPosChange), and the add-on's real main window captures the contact into its ten boxes and fills its
// phone list, with its own capture and phone-list code, over the session bus. The window runs in this process on
// the offscreen platform, so the moment its boxes and list are filled can be seen.
//
// It starts its own corvalent-contacts, so it needs a session bus and no other corvalent-contacts on it; run it on
// a private one:
//
//   dbus-run-session -- build/bench/bench_host_event [DATABASE [ROUNDS [CONTACTS [PAUSE]]]]
//
// DATABASE is written with --generate 1000000 into a temporary folder when not given (under a minute; pass a file
// made once with `corvalent-contacts --generate 1000000 FILE` to skip that). Its contacts are taken to have the IDs
// 1 to CONTACTS (default 1000000), as --generate writes them; the moves skip 1, My Record. Every round checks that the contact box shows the name
// of the contact moved to. Prints median, p90 and max, and the calls the add-on made per event. Moves are PAUSE ms
// apart (default 100, as a user's are at their quickest), so that each starts with both programs idle and the
// contact manager's repaint, which follows its answer, is not timed with the next move; 0 moves back to back.

#include "Percentile.h"
#include "BenchHome.h"
#include "BenchHost.h"

#include "act/DBusBackend.h"
#include "app/MainWindow.h"
#include "common/Error.h"
#include "common/Prompter.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLineEdit>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace corvalent;

using corvalent::bench::BenchHost;
using corvalent::bench::FailingPrompter;
using corvalent::bench::report;
using corvalent::bench::percentile;
using corvalent::bench::waitFor;

namespace {

BenchHost* host = nullptr; // set first thing in main()

[[noreturn]] void fail(const QString& why)
{
    host->fail(why);
}

// Passes every call on to the bus and counts it: each one is a blocking round trip to the contact manager.
class CountingBackend : public AutomationBackend {
public:
    explicit CountingBackend(AutomationBackend& inner) : m_inner(inner) {}
    AutomationPtr create(const QString& progId, std::source_location at) override
    {
        ++calls;
        return wrap(m_inner.create(progId, at));
    }
    HostEvents& events() override { return m_inner.events(); }
    QString hostName() const override { return m_inner.hostName(); }

    qint64 calls = 0;

private:
    struct Object : AutomationObject {
        CountingBackend* backend = nullptr;
        AutomationPtr inner;
        QVariant invoke(const QString& member, const QVariantList& args) override
        {
            ++backend->calls;
            const QVariant result = inner->invoke(member, args);
            return holdsObject(result) ? toVariant(backend->wrap(toObject(result))) : result;
        }
    };
    AutomationPtr wrap(AutomationPtr inner)
    {
        auto object = std::make_shared<Object>();
        object->backend = this;
        object->inner = std::move(inner);
        return object;
    }
    AutomationBackend& m_inner;
};

} // namespace

int main(int argc, char** argv)
{
    // The program folder and the preferences are the bench's own, set before anything reads them.
    BenchHost contactManager("bench_host_event");
    host = &contactManager;
    BenchHome home;
    // Pressed at start-up, so that every capture reads its ten rows.
    home.pressService();
    QTemporaryDir dir;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(dir.filePath(QStringLiteral("config"))));
    qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvalent"));
    app.setQuitOnLastWindowClosed(false);
    const QStringList args = app.arguments().mid(1);
    const int rounds = args.size() > 1 ? args.at(1).toInt() : 300;
    if (rounds < 1)
        fail(QStringLiteral("ROUNDS must be 1 or more"));
    Prompter::install(std::make_unique<FailingPrompter>(contactManager));

    QString database = args.value(0);
    if (database.isEmpty()) {
        database = dir.filePath(QStringLiteral("Million.cvdb"));
        std::fprintf(stderr, "writing a million contacts...\n");
        const int code =
            QProcess::execute(BenchHost::program(), {QStringLiteral("--generate"), QStringLiteral("1000000"), database});
        if (code != 0)
            fail(QStringLiteral("--generate failed with %1").arg(code));
    }

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    host->start(database, env);

    int exitCode = 0;
    try {
        DBusBackend mover(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("mover")));
        const AutomationPtr contact = toObject(mover.create(kProgIdDatabase)->invoke(QStringLiteral("Contact")));
        const AutomationPtr moverView = toObject(toObject(mover.create(kProgIdApp)->invoke(QStringLiteral("Views")))
                                                     ->invoke(QStringLiteral("Create"), {qint16(1), QStringLiteral("CV")}));
        // The first answer comes once the database is open and the window shown.
        moverView->invoke(QStringLiteral("GetCurrentID"));
        const qint64 contacts = args.size() > 2 ? args.at(2).toLongLong() : 1000000;
        const int pause = args.size() > 3 ? args.at(3).toInt() : 100;

        DBusBackend bus;
        CountingBackend addOn(bus);
        QElapsedTimer clock;
        clock.start();
        qint64 eventAt = 0;
        int events = 0;
        // Connected before the window follows the events, so this runs first: the moment the event arrived.
        QObject::connect(&bus.events(), &HostEvents::OnContactPosChange, &app, [&](const QString&) {
            eventAt = clock.nsecsElapsed();
            ++events;
        });

        const qint64 startCalls = addOn.calls;
        MainWindow window(addOn);
        if (!window.Form_Load())
            fail(QStringLiteral("the add-on did not start"));
        window.show();
        const qint64 startUpCalls = addOn.calls - startCalls;
        auto* contactBox = window.findChild<QLineEdit*>(QStringLiteral("txtField(0)"));
        auto* phones = window.findChild<QComboBox*>(QStringLiteral("cboPhone"));
        if (!contactBox || !phones)
            fail(QStringLiteral("the window has no txtField(0) or no cboPhone"));

        // Connected after the window's own reaction (the phone list is filled on the same signal), so this runs
        // once the boxes and the list are filled.
        qint64 filledAt = 0;
        int captures = 0;
        QObject::connect(&window.follower(), &HostFollower::captured, &app, [&] {
            filledAt = clock.nsecsElapsed();
            ++captures;
        });

        QRandomGenerator random(20240611);
        const int warmUp = 10;
        std::vector<double> total, fromEvent, calls;
        for (int round = 0; round < warmUp + rounds; ++round) {
            const QString id = QString::number(random.bounded(qint64(2), contacts + 1));
            waitFor([] { return false; }, pause);
            const int before = captures;
            const qint64 callsBefore = addOn.calls;
            const qint64 start = clock.nsecsElapsed();
            contact->invoke(QStringLiteral("GoTo"), {id});
            if (!waitFor([&] { return captures > before; }, 30000))
                fail(QStringLiteral("the add-on did not follow the move to contact %1 (%2 events, %3 captures)")
                         .arg(id)
                         .arg(events)
                         .arg(captures));
            const qint64 made = addOn.calls - callsBefore;
            const QString name = moverView->invoke(QStringLiteral("GetField"), {qint16(26)}).toString();
            if (contactBox->text() != name || phones->count() == 0)
                fail(QStringLiteral("contact %1: the box shows \"%2\", not \"%3\"").arg(id, contactBox->text(), name));
            if (round >= warmUp) {
                total.push_back(double(filledAt - start) / 1e6);
                fromEvent.push_back(double(filledAt - eventAt) / 1e6);
                calls.push_back(double(made));
            }
        }
        std::printf("%d moves to random contacts of %s\n", rounds, qPrintable(QFileInfo(database).fileName()));
        report("GoTo by another client to the ten boxes and the phone list filled:", total);
        report("the event reaching the add-on to the ten boxes and the phone list filled:", fromEvent);
        std::printf("calls to the contact manager per event: median %.0f, max %.0f\n", percentile(calls, 0.5),
                    percentile(calls, 1.0));
        std::printf("calls to the contact manager at start-up: %lld\n", static_cast<long long>(startUpCalls));
        window.close();
    } catch (const Error& e) {
        std::fprintf(stderr, "bench_host_event: Error %d: %s\n", e.number(), qPrintable(e.description()));
        exitCode = 1;
    }
    host->stop();
    return exitCode;
}
