// How long GO takes to hand the request to the desktop, the whole way a user's key press goes: Return in a box of
// the add-on's real main window (GO is the window's default button) to the opener started with the address. The
// window runs in this process on the offscreen platform against a corvalent-contacts of its own on the sample
// database; the opener is bench_opener_probe, which notes the moment it started and the address it was given.
// "Do not close this window" is on, so that one window serves every round.
//
//   dbus-run-session -- build/bench/bench_go [ROUNDS]
//
// ROUNDS (default 100) after five untimed ones. Every round checks the address the opener received. Prints median,
// p90 and max from the key press to the opener started, and to GO's handler returning (the window answers again).

#include "Percentile.h"
#include "BenchHome.h"
#include "BenchHost.h"

#include "act/DBusBackend.h"
#include "app/MainWindow.h"
#include "common/Error.h"
#include "common/Prompter.h"
#include "prefs/Preferences.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <ctime>
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

// The clock the probe reads.
qint64 monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

} // namespace

int main(int argc, char** argv)
{
    BenchHost contactManager("bench_go");
    host = &contactManager;
    BenchHome home;
    home.pressService();
    QTemporaryDir dir;
    const QString note = dir.filePath(QStringLiteral("opened.txt"));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(dir.filePath(QStringLiteral("config"))));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("CORVALENT_OPENER", CORVALENT_PROBE_PATH);
    qputenv("CORVALENT_PROBE_FILE", QFile::encodeName(note));

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvalent"));
    app.setQuitOnLastWindowClosed(false);
    const QStringList args = app.arguments().mid(1);
    const int rounds = args.isEmpty() ? 100 : args.first().toInt();
    if (rounds < 1)
        fail(QStringLiteral("ROUNDS must be 1 or more"));
    Prompter::install(std::make_unique<FailingPrompter>(contactManager));
    SaveSetting(QStringLiteral("Close"), QStringLiteral("1"));

    const QString database = dir.filePath(QStringLiteral("Sample.cvdb"));
    if (QProcess::execute(BenchHost::program(), {QStringLiteral("--sample"), database}) != 0)
        fail(QStringLiteral("corvalent-contacts --sample failed"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    host->start(database, env);

    {
        DBusBackend backend;
        MainWindow window(backend);
        if (!window.Form_Load())
            fail(QStringLiteral("the add-on did not start"));
        window.show();
        auto* contactBox = window.findChild<QLineEdit*>(QStringLiteral("txtField(0)"));
        auto* countryBox = window.findChild<QLineEdit*>(QStringLiteral("txtField(6)"));
        if (!contactBox || !countryBox)
            fail(QStringLiteral("the window has no txtField(0) or txtField(6)"));
        // A country the service's country file maps, as a user types it: an unknown one would ask for a mapping.
        countryBox->setText(QStringLiteral("Canada"));
        const QString name = contactBox->text();
        if (name.isEmpty())
            fail(QStringLiteral("the add-on captured no contact"));

        const int warmUp = 5;
        std::vector<double> toOpener, toReturn;
        for (int round = 0; round < warmUp + rounds; ++round) {
            QFile::remove(note);
            const qint64 pressed = monotonicNs();
            QTest::keyClick(contactBox, Qt::Key_Return);
            const qint64 returned = monotonicNs();
            if (!waitFor([&] { return QFile::exists(note); }, 10000))
                fail(QStringLiteral("the opener was not started"));
            QFile file(note);
            if (!file.open(QIODevice::ReadOnly))
                fail(QStringLiteral("cannot read the opener's note"));
            const qint64 started = file.readLine().trimmed().toLongLong();
            const QString address = QString::fromUtf8(file.readAll());
            if (!address.startsWith(QStringLiteral("http://www.example.org/find.asp?lang=en&var0=")))
                fail(QStringLiteral("the opener was given \"%1\"").arg(address));
            if (round >= warmUp) {
                toOpener.push_back(double(started - pressed) / 1e6);
                toReturn.push_back(double(returned - pressed) / 1e6);
            }
        }
        std::printf("%d presses of Return in the contact box, GO on a ten-row service\n", rounds);
        report("key press to the opener started with the address:", toOpener);
        report("key press to GO's handler returned:", toReturn);
        window.close();
    }
    host->stop();
    return 0;
}
