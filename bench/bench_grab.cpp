// How long a grab from the browser takes, the whole way a user's key press goes: from Ctrl+2 reaching the X server
// to the text selected in a real Firefox standing in the add-on's Company box. In between: the add-on's shortcut,
// the search for the browser window, activating it, Ctrl+C typed into it through XTEST, Firefox putting the text on
// the clipboard, the add-on reading it back, and the box written. The add-on's real main window runs in this
// process (so the moment its box changes can be seen), on the real X server, against the real corvalent-contacts
// over the session bus; Firefox shows a result page of about 10 KB with one line selected.
//
// A second series grabs a selection of about 10 KB, many lines, with Ctrl+1: timed until the Smart Data Collector
// is shown with the first line.
//
// Grabs come 300 ms apart, a quick user's pace. Before each one the bench checks that the add-on has the keyboard,
// as its shortcut needs; it prints after how many grabs it did not (the browser kept the keyboard), and then hands
// the keyboard to the add-on, untimed, so that the series goes on.
//
// It needs an X server with a window manager, a session bus with no corvalent-contacts on it, and firefox-esr; it
// starts its own corvalent-contacts and Firefox. Run it on a private display and bus:
//
//   bash scripts/x11-session.sh build/bench/bench_grab [ROUNDS]
//
// ROUNDS (default 20) per series, after two untimed ones. Every round checks what arrived; a round that brought the
// wrong text fails the run. Prints median, p90, min and max per series.

#include "Percentile.h"
#include "BenchHome.h"
#include "PickPage.h"

#include "act/DBusBackend.h"
#include "app/MainWindow.h"
#include "common/DBusWire.h"
#include "common/Prompter.h"

#include <QApplication>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEvent>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

using namespace corvalent;
using namespace corvalent::test;

using corvalent::bench::percentile;

namespace {

constexpr int kStartMs = 60000; // Firefox or the contact manager coming up
constexpr int kRoundMs = 10000; // one grab, far more than the add-on ever waits for the browser
constexpr int kPaceMs = 300;    // between two grabs, untimed
constexpr int kCompanyBox = 1;
constexpr int kContactBox = 0;

[[noreturn]] void fail(const QString& why)
{
    std::fprintf(stderr, "bench_grab: %s\n", qPrintable(why));
    std::exit(1);
}

void report(const char* what, const std::vector<double>& ms)
{
    std::printf("%s: %zu rounds\n", what, ms.size());
    std::printf("  median %.1f ms   p90 %.1f ms   min %.1f ms   max %.1f ms\n", percentile(ms, 0.5),
                percentile(ms, 0.9), percentile(ms, 0.0), percentile(ms, 1.0));
    std::fflush(stdout);
}

// Runs the event loop until `done` answers true; false when `ms` passed first. Sleeps in the event loop rather than
// polling, so that the key press is handled the moment it arrives.
bool spinUntil(const std::function<bool()>& done, int ms)
{
    const QDeadlineTimer deadline(ms);
    QTimer tick;
    tick.start(20);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// A keyboard of this bench's own on the X server: XTEST keys come in as if typed, and go to the window that has the
// focus, which is the add-on's.
class Keyboard {
public:
    Keyboard()
    {
        m_c = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(m_c))
            fail(QStringLiteral("cannot reach the X server (DISPLAY=%1)").arg(qEnvironmentVariable("DISPLAY")));
        const xcb_query_extension_reply_t* xtest = xcb_get_extension_data(m_c, &xcb_test_id);
        if (!xtest || !xtest->present)
            fail(QStringLiteral("the X server has no XTEST extension"));
        m_control = keycodeOf(0xffe3); // Control_L
        if (m_control == 0)
            fail(QStringLiteral("the keyboard map has no Control_L"));
    }
    ~Keyboard() { xcb_disconnect(m_c); }

    // Ctrl and the digit, pressed and released; returns once the requests are on their way to the server.
    void controlDigit(int digit)
    {
        const xcb_keycode_t key = keycodeOf(xcb_keysym_t('0' + digit));
        if (key == 0)
            fail(QStringLiteral("the keyboard map has no key for %1").arg(digit));
        const auto send = [&](uint8_t type, xcb_keycode_t code) {
            xcb_test_fake_input(m_c, type, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        };
        send(XCB_KEY_PRESS, m_control);
        send(XCB_KEY_PRESS, key);
        send(XCB_KEY_RELEASE, key);
        send(XCB_KEY_RELEASE, m_control);
        xcb_flush(m_c);
    }

    // The window that has the keyboard now, as the server sees it.
    xcb_window_t focus()
    {
        std::unique_ptr<xcb_get_input_focus_reply_t, decltype(&std::free)> reply(
            xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr), &std::free);
        return reply ? reply->focus : xcb_window_t(XCB_NONE);
    }

private:
    xcb_keycode_t keycodeOf(xcb_keysym_t symbol)
    {
        const xcb_setup_t* setup = xcb_get_setup(m_c);
        const int count = setup->max_keycode - setup->min_keycode + 1;
        std::unique_ptr<xcb_get_keyboard_mapping_reply_t, decltype(&std::free)> map(
            xcb_get_keyboard_mapping_reply(m_c, xcb_get_keyboard_mapping(m_c, setup->min_keycode, uint8_t(count)),
                                           nullptr),
            &std::free);
        if (!map)
            return 0;
        const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(map.get());
        const int perKey = map->keysyms_per_keycode;
        for (int k = 0; k < count; ++k) {
            for (int i = 0; i < perKey; ++i) {
                if (symbols[k * perKey + i] == symbol)
                    return xcb_keycode_t(setup->min_keycode + k);
            }
        }
        return 0;
    }

    xcb_connection_t* m_c = nullptr;
    xcb_keycode_t m_control = 0;
};

// A result page as a directory site shows it: about 10 KB of entries around the selected one.
QString listing(int first, int count)
{
    QString text;
    for (int i = first; i < first + count; ++i)
        text += QStringLiteral("%1. Northwind Traders %1 - %2 Commerce Street, Springfield, IL 627%3 - "
                               "(555) 010-%4\n")
                    .arg(i)
                    .arg(100 + i * 7)
                    .arg(i % 100, 2, 10, QLatin1Char('0'))
                    .arg(1000 + i);
    return text;
}

class Bench {
public:
    Bench(MainWindow& window, PickPage& page) : m_window(window), m_page(page)
    {
        m_company = window.findChild<QLineEdit*>(QStringLiteral("txtField(%1)").arg(kCompanyBox));
        m_companyGrab = window.findChild<QPushButton*>(QStringLiteral("cmdGrab(%1)").arg(kCompanyBox));
        m_contactGrab = window.findChild<QPushButton*>(QStringLiteral("cmdGrab(%1)").arg(kContactBox));
        if (!m_company || !m_companyGrab || !m_contactGrab)
            fail(QStringLiteral("the add-on's window has no Company box or Grab buttons of that name"));
        // Connected after the window's own handler, so this runs once the grab has returned.
        for (QPushButton* button : {m_companyGrab, m_contactGrab})
            QObject::connect(button, &QPushButton::clicked, [this] { m_returned = true; });
        QObject::connect(m_company, &QLineEdit::textChanged, [this](const QString& text) {
            if (m_filledNs < 0 && !text.isEmpty())
                m_filledNs = m_clock.nsecsElapsed();
        });
        qApp->installEventFilter(&m_shown);
    }

    // Grabs so far, and after how many of them the add-on did not have the keyboard when the next one came.
    int grabs() const { return m_grabs; }
    int keyboardLost() const { return m_keyboardLost; }

    void select(const QString& text)
    {
        const int round = m_page.show(text);
        if (!spinUntil([&] { return m_page.selected(round).has_value(); }, kStartMs))
            fail(QStringLiteral("Firefox did not show the page's text"));
        if (*m_page.selected(round) != text)
            fail(QStringLiteral("Firefox selected something other than the page's text"));
    }

    // One grab of a line into Company: milliseconds from the key press to the box filled, and to the add-on ready
    // for the next key.
    std::pair<double, double> grabLine(const QString& expected)
    {
        // Through the contact record, which the box shows: a box emptied behind the record's back would not show
        // the same text grabbed again.
        m_window.form().setText(kCompanyBox, QString());
        prepare();
        m_keyboard.controlDigit(kCompanyBox + 1);
        if (!spinUntil([&] { return m_returned; }, kRoundMs))
            fail(QStringLiteral("the grab did not end"));
        const double ready = double(m_clock.nsecsElapsed()) / 1e6;
        if (m_company->text() != expected)
            fail(QStringLiteral("the Company box holds \"%1\", not \"%2\"").arg(m_company->text(), expected));
        return {double(m_filledNs) / 1e6, ready};
    }

    // One grab of many lines: milliseconds from the key press to the Smart Data Collector shown.
    double grabLines(const QString& firstLine)
    {
        m_window.unload_SmartParser();
        if (!spinUntil([&] { return !m_window.smartParser(); }, kRoundMs))
            fail(QStringLiteral("the Smart Data Collector did not close"));
        prepare();
        m_keyboard.controlDigit(kContactBox + 1);
        if (!spinUntil([&] { return m_returned; }, kRoundMs))
            fail(QStringLiteral("the grab did not end"));
        if (m_shown.atNs < 0 || !m_window.smartParser())
            fail(QStringLiteral("the Smart Data Collector did not open"));
        if (m_window.smartParser()->currentText() != firstLine)
            fail(QStringLiteral("the collector shows \"%1\", not \"%2\"")
                     .arg(m_window.smartParser()->currentText(), firstLine));
        return double(m_shown.atNs) / 1e6;
    }

private:
    // The add-on must have the keyboard for its shortcut. The previous grab should have given it back; when it did
    // not, that is counted and the keyboard is asked for, untimed. The pause first is a quick user's between two
    // grabs, and lets whatever the previous grab set going in the browser settle.
    void prepare()
    {
        spinUntil([] { return false; }, kPaceMs);
        const auto focused = [&] {
            return QGuiApplication::focusWindow() == m_window.windowHandle() &&
                   m_keyboard.focus() == xcb_window_t(m_window.winId());
        };
        if (!focused()) {
            if (m_grabs > 0)
                ++m_keyboardLost;
            m_window.activateWindow();
            if (!spinUntil(focused, kRoundMs))
                fail(QStringLiteral("the add-on's window does not get the keyboard"));
        }
        ++m_grabs;
        m_returned = false;
        m_filledNs = -1;
        m_shown.atNs = -1;
        m_shown.clock = &m_clock;
        m_clock.start();
    }

    // Notes when the Smart Data Collector's window is shown.
    struct ShowWatch : QObject {
        QElapsedTimer* clock = nullptr;
        qint64 atNs = -1;
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            if (event->type() == QEvent::Show && atNs < 0 && clock &&
                watched->objectName() == QLatin1String("frmSmartParser"))
                atNs = clock->nsecsElapsed();
            return false;
        }
    };

    MainWindow& m_window;
    PickPage& m_page;
    int m_grabs = 0;
    int m_keyboardLost = 0;
    Keyboard m_keyboard;
    QLineEdit* m_company = nullptr;
    QPushButton* m_companyGrab = nullptr;
    QPushButton* m_contactGrab = nullptr;
    QElapsedTimer m_clock;
    bool m_returned = false;
    qint64 m_filledNs = -1;
    ShowWatch m_shown;
};

} // namespace

int main(int argc, char** argv)
{
    // The program folder and the preferences are the bench's own, set before anything reads them.
    BenchHome home;
    QTemporaryDir dir;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(dir.filePath(QStringLiteral("config"))));
    qputenv("QT_QPA_PLATFORM", "xcb");

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvalent"));
    app.setQuitOnLastWindowClosed(false);
    const QStringList args = app.arguments().mid(1);
    const int rounds = args.isEmpty() ? 20 : args.first().toInt();
    if (rounds < 1)
        fail(QStringLiteral("ROUNDS must be 1 or more"));
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        fail(QStringLiteral("no X server; run under scripts/x11-session.sh"));
    if (!QDBusConnection::sessionBus().isConnected())
        fail(QStringLiteral("no session bus; run under scripts/x11-session.sh"));
    if (QDBusConnection::sessionBus().interface()->isServiceRegistered(dbuswire::kBusName))
        fail(QStringLiteral("a corvalent-contacts already runs on this bus"));
    // Nothing may wait for a person: a message would be printed and its default taken.
    Prompter::install(std::make_unique<ConsolePrompter>());

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), dir.filePath(QStringLiteral("user")));
    env.insert(QStringLiteral("XDG_DATA_HOME"), dir.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), dir.filePath(QStringLiteral("cache")));

    // Fifty entries before the picked line and fifty after: a page of about 10 KB.
    PickPage page;
    page.setSurroundings(listing(1, 50), listing(52, 50));
    if (!page.listen())
        fail(QStringLiteral("cannot listen on 127.0.0.1"));
    QProcess browser;
    const QString log = dir.filePath(QStringLiteral("firefox.log"));
    if (!startFirefox(browser, dir.filePath(QStringLiteral("firefox")), env, page.url(), log))
        fail(QStringLiteral("cannot start firefox-esr: %1").arg(browser.errorString()));

    const QString contacts = qEnvironmentVariable("CORVALENT_CONTACTS", QStringLiteral(CORVALENT_CONTACTS_PATH));
    const QString database = dir.filePath(QStringLiteral("Sample.cvdb"));
    if (QProcess::execute(contacts, {QStringLiteral("--sample"), database}) != 0)
        fail(QStringLiteral("corvalent-contacts --sample failed"));
    QProcess host;
    host.setProcessEnvironment(env);
    host.setProcessChannelMode(QProcess::ForwardedChannels);
    host.start(contacts, {database});
    if (!spinUntil([] { return QDBusConnection::sessionBus().interface()->isServiceRegistered(dbuswire::kBusName)
                                   .value(); },
                   kStartMs))
        fail(QStringLiteral("corvalent-contacts did not come up"));

    {
        DBusBackend backend;
        MainWindow window(backend);
        if (!window.Form_Load())
            fail(QStringLiteral("the add-on did not start"));
        window.show();
        Bench bench(window, page);

        const QString line = QStringLiteral("Acme Widgets Ltée");
        bench.select(line);
        std::vector<double> filled, ready;
        for (int i = -2; i < rounds; ++i) {
            const auto [toBox, toReady] = bench.grabLine(line);
            if (i >= 0) {
                filled.push_back(toBox);
                ready.push_back(toReady);
            }
        }
        std::printf("Firefox shows a page of %.1f KB\n", double(page.page().size()) / 1024.0);
        report(qPrintable(QStringLiteral("one line (%1 characters), Ctrl+2 to the Company box filled")
                              .arg(line.size())),
               filled);
        report("  ... to the end of the grab (which waits up to 300 ms for the keyboard back)", ready);

        const QString lines = listing(1000, 100);
        bench.select(lines);
        const QString firstLine = lines.section(QLatin1Char('\n'), 0, 0);
        std::vector<double> shown;
        for (int i = -2; i < rounds; ++i) {
            const double ms = bench.grabLines(firstLine);
            if (i >= 0)
                shown.push_back(ms);
        }
        report(qPrintable(QStringLiteral("%1 lines (%2 KB), Ctrl+1 to the Smart Data Collector shown")
                              .arg(lines.count(QLatin1Char('\n')))
                              .arg(double(lines.toUtf8().size()) / 1024.0, 0, 'f', 1)),
               shown);
        std::printf("after %d of %d grabs the add-on did not have the keyboard back when the next grab came\n",
                    bench.keyboardLost(), bench.grabs() - 1);
        window.unload_SmartParser();
        window.close();
    }

    browser.kill();
    browser.waitForFinished();
    host.kill();
    host.waitForFinished();
    return 0;
}
