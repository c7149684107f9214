// How long the add-on takes from being started to showing the contact manager's current contact: from spawning
// corvalent until its window is viewable on the X server. The add-on reads the current contact before it shows its
// window, so the window appearing is the contact appearing. After each timed round GO is pressed (untimed) and the
// address it opens must carry the contact that the contact manager shows; a round that fails this does not count
// and the run ends with an error.
//
// It needs an X server with a window manager and a session bus with no corvalent-contacts on it, and starts its own
// corvalent-contacts; run it on a private display and bus:
//
//   bash scripts/x11-session.sh build/bench/bench_cold_start [ROUNDS [DATABASE...]]
//
// ROUNDS (default 20) are timed on each DATABASE in turn. Without DATABASE it runs on the sample database and on a
// million generated contacts, written first into a temporary folder (about 15 s; pass a file made once with
// `corvalent-contacts --generate 1000000 FILE` to skip that). The first start seeds a fresh program folder and
// the next one warms the caches; neither is timed. Prints median, p90 and the spread per database.

#include "Percentile.h"
#include "act/DBusBackend.h"
#include "common/Error.h"
#include "request/TextTransforms.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <xcb/xcb.h>

#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

using namespace corvalent;
using namespace corvalent::dbuswire;

using corvalent::bench::percentile;

namespace {

const char kEchoService[] = "[Settings]\nName=Echo\nURL=http://127.0.0.1/echo?\nBase=2\nF0=26\nF1=25\n"
                            "V0=name\nV1=company\n";

QString program(const char* variable, const char* built)
{
    const QString set = qEnvironmentVariable(variable);
    return set.isEmpty() ? QString::fromUtf8(built) : set;
}

[[noreturn]] void fail(const QString& why)
{
    std::fprintf(stderr, "bench_cold_start: %s\n", qPrintable(why));
    std::exit(1);
}

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

// The X server as far as telling when a window of a given process is viewable.
class Screen {
public:
    Screen()
    {
        m_c = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(m_c))
            fail(QStringLiteral("cannot reach the X server (DISPLAY=%1)").arg(qEnvironmentVariable("DISPLAY")));
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root;
        m_pidAtom = atom("_NET_WM_PID");
        // Every top-level window made from now on is announced with CreateNotify, and its frame's mapping with
        // MapNotify.
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_c, m_root, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_c);
    }
    ~Screen() { xcb_disconnect(m_c); }

    // Forgets what happened before a round.
    void drain()
    {
        sync();
        while (xcb_generic_event_t* e = xcb_poll_for_event(m_c))
            std::free(e);
    }

    // Waits until a window of `pid` titled `title` is viewable; answers it, or nothing when the process ended or
    // the time ran out.
    std::optional<xcb_window_t> waitForViewable(const QProcess& process, const QString& title, int ms)
    {
        std::set<xcb_window_t> candidates;
        const QDeadlineTimer deadline(ms);
        while (!deadline.hasExpired()) {
            bool changed = false;
            while (xcb_generic_event_t* e = xcb_poll_for_event(m_c)) {
                changed = true;
                if ((e->response_type & 0x7f) == XCB_CREATE_NOTIFY) {
                    const xcb_window_t w = reinterpret_cast<xcb_create_notify_event_t*>(e)->window;
                    // Its own map events from now on; a map that came before is seen by the check below.
                    const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
                    xcb_change_window_attributes(m_c, w, XCB_CW_EVENT_MASK, &mask);
                    candidates.insert(w);
                }
                std::free(e);
            }
            if (xcb_connection_has_error(m_c))
                fail(QStringLiteral("lost the X server"));
            if (changed) {
                for (xcb_window_t w : candidates) {
                    if (viewable(w) && windowPid(w) == process.processId() && windowTitle(w) == title)
                        return w;
                }
            }
            if (process.state() == QProcess::NotRunning)
                return std::nullopt;
            pollfd fd{xcb_get_file_descriptor(m_c), POLLIN, 0};
            ::poll(&fd, 1, 10);
            QCoreApplication::processEvents();
        }
        return std::nullopt;
    }

private:
    xcb_atom_t atom(const char* name)
    {
        Reply<xcb_intern_atom_reply_t> r(
            xcb_intern_atom_reply(m_c, xcb_intern_atom(m_c, 0, uint16_t(std::strlen(name)), name), nullptr),
            &std::free);
        return r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    void sync()
    {
        std::free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr));
    }

    bool viewable(xcb_window_t w)
    {
        Reply<xcb_get_window_attributes_reply_t> r(
            xcb_get_window_attributes_reply(m_c, xcb_get_window_attributes(m_c, w), nullptr), &std::free);
        return r && r->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    qint64 windowPid(xcb_window_t w)
    {
        Reply<xcb_get_property_reply_t> r(
            xcb_get_property_reply(m_c, xcb_get_property(m_c, 0, w, m_pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr),
            &std::free);
        if (!r || xcb_get_property_value_length(r.get()) != 4)
            return -1;
        return *static_cast<const uint32_t*>(xcb_get_property_value(r.get()));
    }

    QString windowTitle(xcb_window_t w)
    {
        Reply<xcb_get_property_reply_t> r(
            xcb_get_property_reply(m_c, xcb_get_property(m_c, 0, w, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                                         256),
                                   nullptr),
            &std::free);
        if (!r)
            return QString();
        return QString::fromUtf8(static_cast<const char*>(xcb_get_property_value(r.get())),
                                 xcb_get_property_value_length(r.get()));
    }

    xcb_connection_t* m_c = nullptr;
    xcb_window_t m_root = 0;
    xcb_atom_t m_pidAtom = 0;
};

bool waitFor(const std::function<bool()>& done, int ms)
{
    const QDeadlineTimer deadline(ms);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        ::poll(nullptr, 0, 5);
    }
    return true;
}

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
        fail(QStringLiteral("cannot write %1").arg(path));
}

struct Bench {
    QTemporaryDir dir;
    Screen screen;
    QString home = dir.filePath(QStringLiteral("home"));
    QString opened = dir.filePath(QStringLiteral("opened.txt"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();

    Bench()
    {
        const QString opener = dir.filePath(QStringLiteral("opener.sh"));
        writeFile(opener, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + QFile::encodeName(opened) + "'\n");
        QFile(opener).setPermissions(QFile(opener).permissions() | QFileDevice::ExeOwner);
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        env.insert(QStringLiteral("CORVALENT_HOME"), home);
        env.insert(QStringLiteral("CORVALENT_OPENER"), opener);
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    }

    QStringList openedLines() const
    {
        return QString::fromUtf8(readFile(opened)).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    // One start of the add-on: the time to its window, or nothing when it did not come up with the contact.
    std::optional<double> round(const QString& expected, bool checkGo)
    {
        screen.drain();
        QProcess addOn;
        addOn.setProcessEnvironment(env);
        addOn.setProcessChannelMode(QProcess::ForwardedChannels);
        QElapsedTimer clock;
        clock.start();
        addOn.start(program("CORVALENT_ADDON", CORVALENT_ADDON_PATH), {});
        const std::optional<xcb_window_t> window = screen.waitForViewable(addOn, QStringLiteral("Corvalent"), 60000);
        const double ms = double(clock.nsecsElapsed()) / 1e6;

        bool good = window.has_value();
        if (!good)
            std::fprintf(stderr, "  the add-on's window did not appear\n");
        if (good && checkGo) {
            const qsizetype before = openedLines().size();
            const int pressed = QProcess::execute(QStringLiteral("xdotool"),
                                                  {QStringLiteral("windowactivate"), QStringLiteral("--sync"),
                                                   QString::number(*window), QStringLiteral("key"),
                                                   QStringLiteral("Return")});
            good = pressed == 0 && waitFor([&] { return openedLines().size() > before; }, 10000);
            const QString got = good ? openedLines().last() : QString();
            if (got != expected) {
                std::fprintf(stderr, "  GO opened \"%s\", not \"%s\"\n", qPrintable(got), qPrintable(expected));
                good = false;
            }
        }
        // GO closes the window, and the add-on with it; otherwise (or if it stays) it is asked to end.
        if (!addOn.waitForFinished(checkGo && good ? 10000 : 0)) {
            addOn.terminate();
            if (!addOn.waitForFinished(5000)) {
                addOn.kill();
                addOn.waitForFinished();
            }
        }
        return good ? std::optional<double>(ms) : std::nullopt;
    }
};

QString echoAddress(DBusBackend& backend)
{
    const AutomationPtr views = toObject(backend.create(kProgIdApp)->invoke(QStringLiteral("Views")));
    const AutomationPtr view = toObject(views->invoke(QStringLiteral("Create"), {qint16(1), QStringLiteral("CV")}));
    QStringList pairs;
    const std::pair<QString, qint16> rows[] = {{QStringLiteral("name"), 26}, {QStringLiteral("company"), 25}};
    for (const auto& [name, field] : rows) {
        const QString text = view->invoke(QStringLiteral("GetField"), {field}).toString();
        if (!text.isEmpty())
            pairs << name + QLatin1Char('=') + Remove_Accents(text);
    }
    return QStringLiteral("http://127.0.0.1/echo?") + pairs.join(QLatin1Char('&'));
}

// The first start seeds the program folder from the shipped data; the Echo service then goes on the first
// button, so that GO opens an address that names the contact.
void putEchoOnTheFirstButton(const QString& home)
{
    const QString settings = home + QStringLiteral("/Settings.ini");
    QByteArray text = readFile(settings);
    const qsizetype at = text.indexOf("\n1=");
    if (text.isEmpty() || at < 0)
        fail(QStringLiteral("the add-on did not seed %1 with a first button").arg(settings));
    const qsizetype end = text.indexOf('\n', at + 1);
    const QByteArray lineEnd = end > 0 && text.at(end - 1) == '\r' ? "\r" : "";
    text.replace(at + 1, (end < 0 ? text.size() : end) - at - 1, "1=Echo" + lineEnd);
    writeFile(settings, text);
    writeFile(home + QStringLiteral("/Presets/Echo.isf"), kEchoService);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    const int rounds = args.isEmpty() ? 20 : args.takeFirst().toInt();
    if (rounds < 1)
        fail(QStringLiteral("ROUNDS must be 1 or more"));
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        fail(QStringLiteral("no X server; run under scripts/x11-session.sh"));
    if (!QDBusConnection::sessionBus().isConnected())
        fail(QStringLiteral("no session bus; run under scripts/x11-session.sh"));
    if (QDBusConnection::sessionBus().interface()->isServiceRegistered(kBusName))
        fail(QStringLiteral("a corvalent-contacts already runs on this bus"));

    Bench bench;
    const QString contacts = program("CORVALENT_CONTACTS", CORVALENT_CONTACTS_PATH);
    QStringList databases = args;
    if (databases.isEmpty()) {
        const QString sample = bench.dir.filePath(QStringLiteral("Sample.cvdb"));
        const QString million = bench.dir.filePath(QStringLiteral("Million.cvdb"));
        if (QProcess::execute(contacts, {QStringLiteral("--sample"), sample}) != 0)
            fail(QStringLiteral("--sample failed"));
        std::fprintf(stderr, "writing a million contacts...\n");
        QElapsedTimer writing;
        writing.start();
        if (QProcess::execute(contacts, {QStringLiteral("--generate"), QStringLiteral("1000000"), million}) != 0)
            fail(QStringLiteral("--generate failed"));
        std::fprintf(stderr, "written in %.1f s\n", double(writing.elapsed()) / 1000.0);
        databases = {sample, million};
    }

    bool seeded = false;
    int exitCode = 0;
    for (const QString& database : databases) {
        QProcess host;
        host.setProcessEnvironment(bench.env);
        host.setProcessChannelMode(QProcess::ForwardedChannels);
        host.start(contacts, {database});
        const bool up = waitFor(
            [] { return QDBusConnection::sessionBus().interface()->isServiceRegistered(kBusName).value(); }, 300000);
        try {
            if (!up)
                throw Error(ErrorNumber::AutomationError, QStringLiteral("corvalent-contacts did not come up"));
            DBusBackend backend;
            // Answers come once the database is open.
            const QString expected = echoAddress(backend);

            if (!seeded) {
                if (!bench.round(QString(), false))
                    throw Error(ErrorNumber::AutomationError, QStringLiteral("the first start failed"));
                putEchoOnTheFirstButton(bench.home);
                seeded = true;
            }
            if (!bench.round(expected, true))
                throw Error(ErrorNumber::AutomationError, QStringLiteral("the warm-up start failed"));

            std::vector<double> times;
            for (int i = 0; i < rounds; ++i) {
                const std::optional<double> ms = bench.round(expected, true);
                if (!ms)
                    throw Error(ErrorNumber::AutomationError, QStringLiteral("round %1 failed").arg(i + 1));
                times.push_back(*ms);
            }
            std::printf("add-on start to the contact on screen: %d rounds on %s\n", rounds,
                        qPrintable(QFileInfo(database).fileName()));
            std::printf("  median %.1f ms   p90 %.1f ms   min %.1f ms   max %.1f ms\n", percentile(times, 0.5),
                        percentile(times, 0.9), percentile(times, 0.0), percentile(times, 1.0));
            std::printf("  each round's GO opened %s\n", qPrintable(bench.openedLines().constLast()));
            std::fflush(stdout);
        } catch (const Error& e) {
            std::fprintf(stderr, "bench_cold_start: %s: %s\n", qPrintable(QFileInfo(database).fileName()),
                         qPrintable(e.description()));
            exitCode = 1;
        }
        host.kill();
        host.waitForFinished();
        waitFor([] { return !QDBusConnection::sessionBus().interface()->isServiceRegistered(kBusName).value(); },
                30000);
        if (exitCode != 0)
            break;
    }
    return exitCode;
}
