// How long the contact manager takes for what its user does on a large database: opening it to the window with the
// first contact, and a lookup (Lookup > Contact…) to the narrowed list shown. The contact manager's real window runs
// in this process on the offscreen platform; no bus is needed.
//
//   build/bench/bench_contacts DATABASE [ROUNDS]
//
// DATABASE is a file written with `corvalent-contacts --generate 1000000 FILE`; it is opened read-write, as the
// contact manager opens it. Each lookup prints how many contacts it found, so that two builds can be compared for
// the same result, and the median, p90 and max of ROUNDS (default 10) runs after one untimed run.

#include "Percentile.h"

#include "model/ContactHost.h"
#include "ui/ContactsWindow.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

using namespace corvalent;
using namespace corvalent::host;

using corvalent::bench::percentile;

namespace {

void report(const QString& what, const std::vector<double>& ms)
{
    std::printf("%s\n  median %.1f ms   p90 %.1f ms   max %.1f ms\n", qPrintable(what), percentile(ms, 0.5),
                percentile(ms, 0.9), percentile(ms, 1.0));
    std::fflush(stdout);
}

std::vector<double> timed(int rounds, const std::function<void()>& run)
{
    run();
    std::vector<double> ms;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer clock;
        clock.start();
        run();
        ms.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    return ms;
}

// The IDs found, in a few bytes, to tell whether two builds found the same contacts.
QString digest(const QVector<qint64>& ids)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (qint64 id : ids)
        hash.addData(QByteArrayView(reinterpret_cast<const char*>(&id), sizeof id));
    return QString::fromLatin1(hash.result().toHex().left(12));
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty() || !QFileInfo(args.first()).isFile()) {
        std::fprintf(stderr, "usage: bench_contacts DATABASE [ROUNDS]\n");
        return 1;
    }
    const QString database = args.first();
    const int rounds = args.size() > 1 ? args.at(1).toInt() : 10;

    auto open = [&] {
        ContactHost host;
        host.openDatabase(database);
        ContactsWindow window(host);
        window.show();
        QCoreApplication::processEvents();
    };
    // Separate, because a database that is opened for the first time may be brought up to date once.
    QElapsedTimer first;
    first.start();
    open();
    std::printf("first open: %.1f ms\n", double(first.nsecsElapsed()) / 1e6);
    const std::vector<double> start = timed(rounds, open);
    report(QStringLiteral("open %1 to the window with the first contact").arg(QFileInfo(database).fileName()), start);

    ContactHost host;
    host.openDatabase(database);
    ContactsWindow window(host);
    window.show();
    QCoreApplication::processEvents();
    // Names, a city and an e-mail address as users type them; "ée" is too short for an index of trigrams.
    for (const QString& text : {QStringLiteral("tremblay"), QStringLiteral("SMITH"), QStringLiteral("MONTRÉAL"),
                                QStringLiteral("hélène côté"), QStringLiteral("contact4242@"), QStringLiteral("ée"),
                                QStringLiteral("no contact has this")}) {
        const std::vector<double> ms = timed(rounds, [&] {
            window.lookupText(text);
            QCoreApplication::processEvents();
        });
        report(QStringLiteral("lookup \"%1\": %2 contacts (%3)")
                   .arg(text)
                   .arg(host.lookupIds().size())
                   .arg(digest(host.lookupIds())),
               ms);
    }
    return 0;
}
