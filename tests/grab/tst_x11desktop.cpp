// The X11 desktop on a real X server with a window manager (scripts/x11-session.sh runs this test): windows of this
// process and of a helper program, activated, typed into with Ctrl+C and read back through the clipboard.

#include "grab/X11Desktop.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QElapsedTimer>
#include <QImage>
#include <QProcess>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <xcb/xcb.h>

#include <csignal>
#include <cstring>
#include <map>
#include <memory>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

constexpr int kWindowMs = 15000; // a window to be shown and managed, a helper to start

xcb_connection_t* qtConnection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_atom_t atom(const char* name)
{
    xcb_connection_t* c = qtConnection();
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr);
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

QByteArray wmClass(const QStringList& names)
{
    return names.value(0).toUtf8() + '\0' + names.value(1).toUtf8() + '\0';
}

// The helper program, another client of the X server: it shows one window and copies on Ctrl+C.
class CopyWindow {
public:
    CopyWindow(const QString& mode, const QString& text)
    {
        m_file.open();
        m_file.write(text.toUtf8());
        m_file.flush();
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput, [this] {
            while (m_process.canReadLine()) {
                const QByteArray line = m_process.readLine().trimmed();
                if (line.startsWith("window "))
                    m_window = line.mid(7).toULongLong();
                else if (line == "owned")
                    ++m_owned;
            }
        });
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(qEnvironmentVariable("CORVALENT_COPY_WINDOW"), {mode, u"Page — Mozilla Firefox"_s, m_file.fileName()});
    }
    ~CopyWindow()
    {
        if (m_stopped)
            ::kill(pid_t(m_process.processId()), SIGCONT);
        m_process.kill();
        m_process.waitForFinished();
    }
    WindowHandle window() const { return m_window; }
    int owned() const { return m_owned; }
    bool running() const { return m_process.state() != QProcess::NotRunning; }
    void stop()
    {
        ::kill(pid_t(m_process.processId()), SIGSTOP);
        m_stopped = true;
    }

private:
    QTemporaryFile m_file;
    QProcess m_process;
    WindowHandle m_window = 0;
    int m_owned = 0;
    bool m_stopped = false;
};

// A mebibyte of lines of mixed scripts, as a long result page gives.
QString largeText()
{
    QString text;
    qsizetype bytes = 0;
    for (int line = 0; bytes < (1 << 20); ++line) {
        const QString next = u"Line %1: Grabbed text é 漢字 ünïcödé ½\n"_s.arg(line, 6, 10, QChar(u'0'));
        bytes += next.toUtf8().size();
        text += next;
    }
    text.chop(1);
    return text;
}

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

    void windowFacts_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QStringList>("programs");
        QTest::addColumn<bool>("visible");
        QTest::addColumn<bool>("tool");
        QTest::addColumn<bool>("ownedByMain");

        QTest::newRow("browser") << u"normal"_s << u"Page — Mozilla Firefox"_s
                                 << QStringList{u"Navigator"_s, u"firefox-esr"_s} << true << false << false;
        QTest::newRow("palette") << u"tool"_s << u"Palette ä"_s << QStringList{u"palette"_s, u"Palette"_s} << true
                                 << true << true;
        QTest::newRow("dialog") << u"dialog"_s << u"Einstellungen – Größe"_s
                                << QStringList{u"dialog"_s, u"Dialog"_s} << true << false << true;
        QTest::newRow("minimised") << u"minimised"_s << u"Hidden Netscape"_s << QStringList{u"hidden"_s, u"Hidden"_s}
                                   << false << false << false;
        QTest::newRow("latin-1 name only") << u"legacy"_s << u"Café Netscape"_s
                                           << QStringList{u"café"_s, u"Ünïcode"_s} << true << false << false;
        QTest::newRow("minimised, kept mapped") << u"hidden mapped"_s << u"Thumbnail Netscape"_s
                                                << QStringList{u"thumb"_s, u"Thumb"_s} << false << false << false;
        QTest::newRow("kept off the task bar") << u"skip taskbar"_s << u"Side panel"_s
                                               << QStringList{u"panel"_s, u"Panel"_s} << true << true << false;
    }

    void windowFacts()
    {
        QFETCH(QString, kind);
        QFETCH(QString, title);
        QFETCH(QStringList, programs);
        QFETCH(bool, visible);
        QFETCH(bool, tool);
        QFETCH(bool, ownedByMain);

        std::unique_ptr<QWidget> window;
        if (kind == u"tool")
            window = std::make_unique<QWidget>(&m_main, Qt::Tool);
        else if (kind == u"dialog")
            window = std::make_unique<QDialog>(&m_main);
        else
            window = std::make_unique<QWidget>();
        window->setWindowTitle(title);
        window->resize(200, 100);
        const WId id = window->winId(); // the X window exists from here on, not yet mapped
        writeProperty(id, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, wmClass(programs));
        if (kind == u"skip taskbar") {
            const xcb_atom_t state = atom("_NET_WM_STATE_SKIP_TASKBAR");
            writeProperty(id, atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32,
                        QByteArray(reinterpret_cast<const char*>(&state), sizeof state));
        }
        if (kind == u"minimised")
            window->showMinimized();
        else
            window->show();
        if (kind == u"legacy") {
            xcb_delete_property(qtConnection(), xcb_window_t(id), atom("_NET_WM_NAME"));
            writeProperty(id, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, title.toLatin1());
        }
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->stackingFromTop().contains(id), kWindowMs);
        if (kind == u"hidden mapped") {
            // As window managers that keep minimised windows mapped (for their thumbnails) say it.
            const xcb_atom_t hidden = atom("_NET_WM_STATE_HIDDEN");
            writeProperty(id, atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32,
                          QByteArray(reinterpret_cast<const char*>(&hidden), sizeof hidden));
        }

        QCOMPARE(m_desktop->title(id), title);
        QCOMPARE(m_desktop->programNames(id), programs);
        QTRY_COMPARE(m_desktop->isVisible(id), visible);
        QCOMPARE(m_desktop->hasParent(id), false);
        QCOMPARE(m_desktop->owner(id), ownedByMain ? WindowHandle(m_main.winId()) : WindowHandle(0));
        QTRY_COMPARE(m_desktop->isToolWindow(id), tool);
    }

    void vanishedWindow()
    {
        const WindowHandle gone = xcb_generate_id(qtConnection()); // an ID that names no window
        QCOMPARE(m_desktop->title(gone), QString());
        QCOMPARE(m_desktop->programNames(gone), QStringList());
        QCOMPARE(m_desktop->isVisible(gone), false);
        QCOMPARE(m_desktop->owner(gone), WindowHandle(0));
        QCOMPARE(m_desktop->isToolWindow(gone), false);
        QVERIFY(!m_desktop->activate(gone, 300));
    }

    void stacking_data()
    {
        QTest::addColumn<QString>("activated");
        QTest::addColumn<QString>("fromTop");
        QTest::newRow("in turn") << u"abc"_s << u"cba"_s;
        QTest::newRow("backwards") << u"cba"_s << u"abc"_s;
        QTest::newRow("one again") << u"bcab"_s << u"bac"_s;
    }

    void stacking()
    {
        QFETCH(QString, activated);
        QFETCH(QString, fromTop);
        std::map<QChar, std::unique_ptr<QWidget>> windows;
        for (const QChar name : u"abc"_s) {
            auto& window = windows[name] = std::make_unique<QWidget>();
            window->setWindowTitle(name);
            window->resize(150, 100);
            window->show();
            QTRY_VERIFY_WITH_TIMEOUT(m_desktop->stackingFromTop().contains(window->winId()), kWindowMs);
        }
        for (const QChar name : activated)
            QVERIFY(m_desktop->activate(windows[name]->winId(), kWindowMs));

        QString order;
        for (const WindowHandle window : m_desktop->stackingFromTop()) {
            for (const auto& [name, widget] : windows) {
                if (widget->winId() == window)
                    order += name;
            }
        }
        QCOMPARE(order, fromTop);
        QCOMPARE(m_desktop->stackingFromTop().value(0), WindowHandle(windows[activated.back()]->winId()));
    }

    // The highlighted selection, here owned by this very process: it can only answer while the wait lets its event
    // loop run.
    void primarySelection_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("expected");
        QTest::newRow("text") << u"text"_s << u"Highlighted é 漢字"_s;
        QTest::newRow("picture") << u"image"_s << QString();
        QTest::newRow("nothing") << u"cleared"_s << QString();
    }

    void primarySelection()
    {
        QFETCH(QString, kind);
        QFETCH(QString, expected);
        QClipboard* clipboard = QGuiApplication::clipboard();
        if (kind == u"text")
            clipboard->setText(expected, QClipboard::Selection);
        else if (kind == u"image")
            clipboard->setImage(QImage(8, 8, QImage::Format_RGB32), QClipboard::Selection);
        else
            clipboard->clear(QClipboard::Selection);
        QCOMPARE(m_desktop->primarySelection(), expected);
    }

    void copy_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("stopOwner");
        QTest::addColumn<int>("timeoutMs");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("runsOut");

        const QString line = u"Grabbed text é 漢字"_s;
        const QString large = largeText();
        QTest::newRow("selected line") << u"line"_s << line << false << 5000 << line << false;
        QTest::newRow("large text") << u"large"_s << large << false << 20000 << large << false;
        QTest::newRow("large text, in pieces") << u"pieces"_s << large << false << 20000 << large << false;
        QTest::newRow("nothing selected") << u"none"_s << line << false << 1000 << QString() << true;
        QTest::newRow("latin-1 only") << u"latin1"_s << u"Grabbed text é ½"_s << false << 5000 << u"Grabbed text é ½"_s
                                      << false;
        QTest::newRow("a picture") << u"image"_s << QString() << false << 5000 << QString() << false;
        QTest::newRow("owner stopped") << u"line"_s << line << true << 1000 << QString() << true;
    }

    void copy()
    {
        QFETCH(QString, mode);
        QFETCH(QString, text);
        QFETCH(bool, stopOwner);
        QFETCH(int, timeoutMs);
        QFETCH(QString, expected);
        QFETCH(bool, runsOut);

        CopyWindow helper(mode, text);
        QTRY_VERIFY_WITH_TIMEOUT(helper.window() != 0 || !helper.running(), kWindowMs);
        QVERIFY(helper.window() != 0);
        QTRY_VERIFY_WITH_TIMEOUT(m_desktop->isVisible(helper.window()), kWindowMs);

        // Whatever was on the clipboard before must not pass for the copy.
        QGuiApplication::clipboard()->setText(u"Old clipboard text"_s);
        m_desktop->clearClipboard();
        QElapsedTimer took;
        took.start();
        QVERIFY(m_desktop->activate(helper.window(), kWindowMs));
        m_desktop->sendCopyKeystroke();
        if (stopOwner) {
            QTRY_VERIFY_WITH_TIMEOUT(helper.owned() > 0, kWindowMs);
            helper.stop();
        }

        int ticks = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
        ticker.start(10);
        const QString got = m_desktop->waitForClipboardText(timeoutMs);
        qInfo("%s: %lld ms from activation to the answer (%lld characters)", QTest::currentDataTag(),
              took.elapsed(), qint64(got.size()));
        QCOMPARE(got.size(), expected.size());
        QCOMPARE(got, expected);
        if (runsOut)
            QVERIFY2(ticks > 0, "the event loop stood still while waiting");
    }

private:
    std::unique_ptr<X11Desktop> m_desktop;
    QWidget m_main;
};

QTEST_MAIN(TestX11Desktop)
#include "tst_x11desktop.moc"
