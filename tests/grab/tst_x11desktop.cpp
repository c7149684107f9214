// The X11 desktop on a real X server with a window manager (scripts/x11-session.sh runs this test): windows of this
// process, activated, typed into with Ctrl+C and read back through the clipboard.

#include "grab/X11Desktop.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QImage>
#include <QShortcut>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

constexpr int kWindowMs = 15000; // a window to be shown and managed

// The X server connection of this process's Qt, and atoms by name.
xcb_connection_t* qtConnection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_atom_t atom(const char* name)
{
    xcb_connection_t* c = qtConnection();
    xcb_intern_atom_reply_t* reply =
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : XCB_NONE;
    free(reply);
    return result;
}

// Writes a property of the window as a program of its own would, and waits until the server has it.
void writeProperty(WId window, xcb_atom_t property, xcb_atom_t type, int format, const QByteArray& value)
{
    xcb_connection_t* c = qtConnection();
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, xcb_window_t(window), property, type, uint8_t(format),
                        uint32_t(value.size() * 8 / format), value.constData());
    free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
}

// Holds the CLIPBOARD for a window of this process, on Qt's connection (a client other than the desktop's), and
// answers requests itself before Qt sees them, as other toolkits do: the text under one type only, in pieces of
// `m_piece` bytes through the INCR protocol when it is longer than that, or never at all, as a hung program.
struct RawOwner : QAbstractNativeEventFilter {
    RawOwner(xcb_window_t window, xcb_atom_t type, QByteArray bytes)
        : m_window(window), m_type(type), m_bytes(std::move(bytes))
    {
    }

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        const auto* event = static_cast<xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7f) == XCB_SELECTION_REQUEST)
            return answer(*static_cast<const xcb_selection_request_event_t*>(message));
        // The requestor took the last piece: the next one, or an empty one to end.
        const auto* change = static_cast<const xcb_property_notify_event_t*>(message);
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY || m_sent < 0 || change->window != m_requestor
            || change->atom != m_property || change->state != XCB_PROPERTY_DELETE)
            return false;
        const QByteArray piece = m_bytes.mid(m_sent, m_piece);
        write(m_type, 8, piece.size(), piece.constData());
        m_sent = piece.isEmpty() ? -1 : m_sent + piece.size();
        return true;
    }

    bool answer(const xcb_selection_request_event_t& request)
    {
        if (request.owner != m_window)
            return false;
        if (!m_answers)
            return true;
        xcb_selection_notify_event_t notify{XCB_SELECTION_NOTIFY, 0,           0, request.time, request.requestor,
                                            request.selection,    request.target, XCB_NONE};
        if (request.target == m_type) {
            m_requestor = request.requestor;
            m_property = notify.property = request.property;
            if (m_bytes.size() > m_piece) {
                const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
                xcb_change_window_attributes(qtConnection(), m_requestor, XCB_CW_EVENT_MASK, &events);
                const auto size = uint32_t(m_bytes.size());
                write(atom("INCR"), 32, 1, &size);
                m_sent = 0;
            } else {
                write(m_type, 8, m_bytes.size(), m_bytes.constData());
            }
        }
        xcb_send_event(qtConnection(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&notify));
        xcb_flush(qtConnection());
        return true;
    }

    void write(xcb_atom_t type, int format, qsizetype length, const void* data)
    {
        xcb_change_property(qtConnection(), XCB_PROP_MODE_REPLACE, m_requestor, m_property, type, uint8_t(format),
                            uint32_t(length), data);
        xcb_flush(qtConnection());
    }

    xcb_window_t m_window;
    xcb_atom_t m_type;
    QByteArray m_bytes;
    qsizetype m_piece = 64 * 1024;
    xcb_window_t m_requestor = XCB_NONE;
    xcb_atom_t m_property = XCB_NONE;
    qsizetype m_sent = -1; // bytes of an incremental transfer sent so far; -1 when none is under way
    bool m_answers = true;
};

} // namespace

class TestX11Desktop : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
        m_desktop = X11Desktop::connect();
        QVERIFY(m_desktop);
        m_main.setWindowTitle(u"Main window"_s);
        m_main.show();
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->stackingFromTop().contains(m_main.winId()), kWindowMs);
    }

    // The window facts, as Qt and the window manager leave them or as other programs write them.
    void windowFacts_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("facts");
        QTest::newRow("owned palette") << u"tool"_s << u"Palette ä"_s << u"visible tool owned"_s;
        QTest::newRow("minimised") << u"minimised"_s << u"Hidden Netscape"_s << QString();
        QTest::newRow("latin-1 name only") << u"legacy"_s << u"Café Netscape"_s << u"visible"_s;
        QTest::newRow("minimised, kept mapped") << u"_NET_WM_STATE_HIDDEN"_s << u"Thumb"_s << QString();
        QTest::newRow("off the task bar") << u"_NET_WM_STATE_SKIP_TASKBAR"_s << u"Panel"_s << u"visible tool"_s;
    }

    void windowFacts()
    {
        QFETCH(QString, kind);
        QFETCH(QString, title);
        QFETCH(QString, facts);
        const QStringList programs{title.section(u' ', 0, 0).toLower(), u"Ünïcode "_s + title};
        std::unique_ptr<QWidget> window =
            kind == u"tool" ? std::make_unique<QWidget>(&m_main, Qt::Tool) : std::make_unique<QWidget>();
        window->setWindowTitle(title);
        window->resize(200, 100);
        const WId id = window->winId(); // the X window exists from here on, not yet mapped
        writeProperty(id, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                      programs[0].toUtf8() + '\0' + programs[1].toUtf8() + '\0');
        const xcb_atom_t state = kind.startsWith(u"_NET") ? atom(qPrintable(kind)) : XCB_NONE;
        const QByteArray stateBytes(reinterpret_cast<const char*>(&state), sizeof state);
        if (kind.endsWith(u"SKIP_TASKBAR"))
            writeProperty(id, atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, stateBytes);
        kind == u"minimised" ? window->showMinimized() : window->show();
        if (kind == u"legacy") {
            xcb_delete_property(qtConnection(), xcb_window_t(id), atom("_NET_WM_NAME"));
            writeProperty(id, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, title.toLatin1());
        }
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->stackingFromTop().contains(id), kWindowMs);
        if (kind.endsWith(u"HIDDEN")) { // as window managers that keep minimised windows mapped say it
            // Shown first, so that the state alone must hide it, not a map still under way.
            QTRY_VERIFY_WITH_TIMEOUT(m_desktop->isVisible(id), kWindowMs);
            writeProperty(id, atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, stateBytes);
        }

        QCOMPARE(m_desktop->title(id), title);
        QCOMPARE(m_desktop->programNames(id), programs);
        const auto seen = [&] {
            const WindowHandle owner = m_desktop->owner(id);
            return QStringList{m_desktop->isVisible(id) ? u"visible"_s : QString(),
                               m_desktop->isToolWindow(id) ? u"tool"_s : QString(),
                               owner == 0 ? QString() : owner == m_main.winId() ? u"owned"_s : u"other owner"_s}
                .join(u' ')
                .simplified();
        };
        QTRY_COMPARE(seen(), facts);
    }

    void vanishedWindow()
    {
        const WindowHandle gone = xcb_generate_id(qtConnection()); // an ID that names no window
        QCOMPARE(m_desktop->title(gone), QString());
        QVERIFY(m_desktop->programNames(gone).isEmpty() && !m_desktop->isVisible(gone) && !m_desktop->owner(gone));
        QVERIFY(!m_desktop->isToolWindow(gone) && !m_desktop->activate(gone, 300));
    }

    // The highlighted selection, owned by this very process: it can only answer while the wait runs the event loop.
    void primarySelection()
    {
        QClipboard* clipboard = QGuiApplication::clipboard();
        clipboard->setText(u"Highlighted é 漢字"_s, QClipboard::Selection);
        QCOMPARE(m_desktop->primarySelection(), u"Highlighted é 漢字"_s);
        clipboard->setImage(QImage(8, 8, QImage::Format_RGB32), QClipboard::Selection);
        QCOMPARE(m_desktop->primarySelection(), QString());
        clipboard->clear(QClipboard::Selection);
        QCOMPARE(m_desktop->primarySelection(), QString());
    }

    void copy_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        // Over a mebibyte of lines of mixed scripts, as a long result page gives.
        QString large;
        for (int line = 0; large.size() < 900'000; ++line)
            large += u"Line %1: Grabbed text é 漢字 ünïcödé ½\n"_s.arg(line, 6, 10, QChar(u'0'));
        QTest::newRow("over 1 MiB, in pieces") << u"utf8"_s << large << large;
        QTest::newRow("latin-1 only") << u"latin1"_s << u"Grabbed text é ½"_s << u"Grabbed text é ½"_s;
        QTest::newRow("nothing selected") << u"none"_s << u"Grabbed"_s << QString();
        QTest::newRow("owner stopped") << u"stopped"_s << u"Grabbed"_s << QString();
    }

    void copy()
    {
        QFETCH(QString, mode);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        // The browser's stand-in: Ctrl+C in its window puts the text on the clipboard.
        QWidget browser;
        browser.setWindowTitle(u"Page — Mozilla Firefox"_s);
        browser.resize(400, 200);
        browser.show();
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->isVisible(browser.winId()), kWindowMs);
        const bool latin1 = mode == u"latin1";
        RawOwner owner(xcb_window_t(browser.winId()), latin1 ? xcb_atom_t(XCB_ATOM_STRING) : atom("UTF8_STRING"),
                       latin1 ? text.toLatin1() : text.toUtf8());
        owner.m_answers = mode != u"stopped";
        qApp->installNativeEventFilter(&owner);
        bool copied = false;
        QShortcut copy(QKeySequence::Copy, &browser);
        copy.setEnabled(mode != u"none");
        connect(&copy, &QShortcut::activated, [&] {
            xcb_set_selection_owner(qtConnection(), owner.m_window, atom("CLIPBOARD"), XCB_CURRENT_TIME);
            xcb_flush(qtConnection());
            copied = true;
        });

        // Whatever was on the clipboard before must not pass for the copy.
        QGuiApplication::clipboard()->setText(u"Old clipboard text"_s);
        m_desktop->clearClipboard();
        QVERIFY(m_desktop->activate(browser.winId(), kWindowMs));
        QCOMPARE(m_desktop->stackingFromTop().value(0), WindowHandle(browser.winId())); // in front of the others
        m_desktop->sendCopyKeystroke();
        // The keys reach the window through this process's event loop, which the wait below keeps for the owner.
        QTRY_COMPARE_WITH_TIMEOUT(copied, mode != u"none", 300);

        const bool runsOut = expected.isEmpty();
        int ticks = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
        ticker.start(10);
        QElapsedTimer took;
        took.start();
        QCOMPARE(m_desktop->waitForClipboardText(runsOut ? 1000 : 20000), expected);
        if (runsOut) {
            QVERIFY2(took.elapsed() < 3000, qPrintable(QString::number(took.elapsed())));
            QVERIFY2(ticks > 0, "the event loop stood still while waiting");
        }
    }

private:
    std::unique_ptr<X11Desktop> m_desktop;
    QWidget m_main;
};

QTEST_MAIN(TestX11Desktop)
#include "tst_x11desktop.moc"
