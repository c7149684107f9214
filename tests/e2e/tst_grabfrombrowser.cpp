// Grab as a user has it: a real Firefox showing a page with text selected, the add-on and the contact manager, all
// on an X server with a window manager (scripts/x11-session.sh runs this test), driven through xdotool. What a
// grab brought is seen where it ends up: Update Contact writes the boxes into the contact manager's database.
//
// Firefox is started once, on a page served from here whose selection the test sets (PickPage.h).

#include "act/DBusBackend.h"
#include "store/ContactStore.h"
#include "support/BusSupport.h"
#include "support/TestHome.h"
#include "PickPage.h"
#include "X11Driver.h"

#include <QProcess>
#include <QTest>

#include <xcb/xcb.h>

#include <memory>

using namespace corvalent;
using namespace corvalent::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int kBrowserMs = 60000; // Firefox's first start on a fresh profile, on a busy machine
constexpr int kPageMs = 30000;    // the page to show and select new text
constexpr int kGrabMs = 20000;    // a grab to run to its end; the add-on gives up on the browser long before

enum Box { ContactBox = 0, CompanyBox = 1, AddressBox = 2, ZipBox = 5, FreeBox = 7 };
enum FieldId { Company = 25, Contact = 26, Address1 = 27, City = 30, State = 31, Zip = 32, User1 = 80 };

// The boxes' rows as the service names them: the contact's own fields, and User 1 on the first free row.
const char kService[] = "[Settings]\nName=Grab\nURL=http://127.0.0.1/lookup?\nBase=2\n"
                        "F0=26\nF1=25\nF2=27\nF3=30\nF4=31\nF5=32\nF6=33\nF7=80\nF8=0\nF9=0\n"
                        "V0=name\nV1=company\n";

// The add-on's keyboard focus as the X server reports it. A grab gives the keyboard to the browser for the copy and
// takes it back at its end; the add-on keeps handling input in between, so a key sent before the grab has ended
// would be handled in the middle of it.
class FocusWatch {
public:
    explicit FocusWatch(quint32 window) : m_window(window)
    {
        m_c = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(m_c))
            return;
        const uint32_t mask = XCB_EVENT_MASK_FOCUS_CHANGE;
        xcb_change_window_attributes(m_c, m_window, XCB_CW_EVENT_MASK, &mask);
        forget();
    }
    ~FocusWatch() { xcb_disconnect(m_c); }
    FocusWatch(const FocusWatch&) = delete;
    FocusWatch& operator=(const FocusWatch&) = delete;

    bool connected() const { return !xcb_connection_has_error(m_c); }

    // Drops what was reported so far.
    void forget()
    {
        std::free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr));
        while (xcb_generic_event_t* e = xcb_poll_for_event(m_c))
            std::free(e);
        m_lost = false;
    }

    // Whether, since forget(), the window lost the keyboard and then got it back, within `ms`.
    bool waitForLostAndBack(int ms)
    {
        bool back = false;
        return QTest::qWaitFor(
            [&] {
                while (xcb_generic_event_t* e = xcb_poll_for_event(m_c)) {
                    const uint8_t type = e->response_type & 0x7f;
                    const auto* focus = reinterpret_cast<const xcb_focus_in_event_t*>(e);
                    // Focus moving among the window's own children, or following the pointer, is not the keyboard
                    // going elsewhere.
                    const bool counts = focus->mode == XCB_NOTIFY_MODE_NORMAL &&
                                        focus->detail != XCB_NOTIFY_DETAIL_INFERIOR &&
                                        focus->detail != XCB_NOTIFY_DETAIL_POINTER;
                    if (type == XCB_FOCUS_OUT && counts)
                        m_lost = true;
                    else if (type == XCB_FOCUS_IN && counts && m_lost)
                        back = true;
                    std::free(e);
                }
                return back;
            },
            ms);
    }

private:
    xcb_connection_t* m_c = nullptr;
    xcb_window_t m_window = 0;
    bool m_lost = false;
};

} // namespace

class TestGrabFromBrowser : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QString m_database;
    PickPage m_page;
    QProcess m_host;
    QProcess m_addon;
    QProcess m_browser;
    QString m_addonWindow;
    std::unique_ptr<FocusWatch> m_focus;
    std::unique_ptr<DBusBackend> m_backend;

    qint64 currentId() const { return test::currentContactId(*m_backend); }

    // A field of the contact manager's current contact, as its database holds it.
    QString stored(int fieldId) const
    {
        host::ContactStore store;
        store.open(m_database);
        return store.fieldText(currentId(), fieldId);
    }

    // Puts `text` in the page, selected, and answers whether Firefox took exactly that as its selection.
    bool select(const QString& text)
    {
        const int round = m_page.show(text);
        if (!QTest::qWaitFor([&] { return m_page.selected(round).has_value(); }, kPageMs)) {
            qWarning("the page did not show round %d", round);
            return false;
        }
        if (*m_page.selected(round) != text) {
            qWarning("Firefox selected \"%s\" rather than \"%s\"", qPrintable(*m_page.selected(round)),
                     qPrintable(text));
            return false;
        }
        return true;
    }

    // Presses the box's Grab shortcut. From the browser, the add-on's window is activated first, and the answer
    // comes once that grab has run to its end (the add-on has the keyboard back). A grab that takes its text from the
    // Smart Data Collector never leaves the add-on: its keys go wherever the keyboard is, as a user's next Grab does
    // without touching the mouse, and there is nothing to wait for.
    bool grab(int box, bool fromBrowser = true)
    {
        m_focus->forget();
        const QString key = u"ctrl+"_s + QString::number((box + 1) % 10);
        if (!fromBrowser)
            return xdotool({u"key"_s, u"--clearmodifiers"_s, key}).has_value();
        if (type(m_addonWindow, key) && m_focus->waitForLostAndBack(kGrabMs))
            return true;
        qWarning("the grab into box %d did not give the keyboard back to the add-on", box);
        return false;
    }

    // The title of the window that has the keyboard, to tell where keys went.
    static QString keyboardHolder()
    {
        return xdotool({u"getwindowfocus"_s, u"getwindowname"_s}, true).value_or(u"?"_s).trimmed();
    }

    // The question of Update Contact, answered with `answer` ("y" or "n"); answers whether it was asked and went.
    bool answerUpdateQuestion(const QString& answer)
    {
        if (!type(m_addonWindow, u"alt+u"_s))
            return false;
        const QString question = waitForWindow(m_addon, u"^App\\.title$"_s);
        if (question.isEmpty()) {
            qWarning("Update Contact asked nothing; the add-on's windows: %s",
                     qPrintable(windowTitles(m_addon).join(u", "_s)));
            return false;
        }
        return type(question, answer) && waitForNoWindow(m_addon, u"^App\\.title$"_s);
    }

    // Update Contact as the user does it, Alt+U and Yes; answers once the boxes are in the database. The question
    // is then asked once more and declined: the add-on can ask it only after the first update ran to its end.
    bool updateContact()
    {
        return answerUpdateQuestion(u"y"_s) && answerUpdateQuestion(u"n"_s);
    }

private slots:
    void initTestCase()
    {
        const QString missing = missingForX11Session();
        QVERIFY2(missing.isEmpty(), qPrintable(missing));

        m_database = m_home.file(u"Contacts.cvdb"_s);
        host::writeSampleDatabase(m_database);
        m_home.write(u"Presets/Grab.isf"_s, kService);
        m_home.write(u"Settings.ini"_s, "[Buttons]\n1=Grab\n");

        QProcessEnvironment env = programEnvironment(m_home.path());
        env.insert(u"XDG_CACHE_HOME"_s, m_home.path() + u"/cache"_s);

        QVERIFY(m_page.listen());
        // Firefox comes up slowest: it starts first, and the others start meanwhile.
        const QString log = m_home.path() + u"/firefox.log"_s;
        QVERIFY2(startFirefox(m_browser, m_home.path() + u"/firefox"_s, env, m_page.url(), log),
                 qPrintable(m_browser.errorString()));

        QVERIFY2(!startHostWindow(m_host, env, m_database).isEmpty(), "the contact manager's window did not appear");
        m_backend = std::make_unique<DBusBackend>();
        m_addonWindow = startAddonWindow(m_addon, env);
        QVERIFY2(!m_addonWindow.isEmpty(), "the add-on's window did not appear");
        m_focus = std::make_unique<FocusWatch>(m_addonWindow.toUInt());
        QVERIFY(m_focus->connected());

        QVERIFY2(!waitForWindow(m_browser, u"^Pick "_s, kBrowserMs).isEmpty(), test::TestHome::read(log).constData());
    }

    void cleanupTestCase()
    {
        m_focus.reset();
        m_backend.reset();
        stop(m_browser);
        stop(m_addon);
        stop(m_host);
    }

    void cleanup()
    {
        // A failed case may leave the question open, which would swallow the next case's keys.
        const QString question = windowNow(m_addon, u"^App\\.title$"_s);
        if (!question.isEmpty())
            type(question, u"Escape"_s);
    }

    // One line selected in the page goes into the box whose Grab was pressed, accents and all, and from there into
    // the contact.
    void oneLineGoesIntoItsBox()
    {
        const QString company = u"Acme Widgets Ltée"_s;
        QVERIFY(stored(Company) != company);
        QVERIFY(select(company));
        QVERIFY(grab(CompanyBox));
        QVERIFY(updateContact());
        QCOMPARE(stored(Company), company);
    }

    // Several lines open the Smart Data Collector and fill no box yet; each further Grab takes the collector's
    // current line, cleaned of its label, into its own box, and the collector goes once its lines are handed out.
    void severalLinesAreHandedOutOneByOne()
    {
        const QString name = stored(Contact);
        QVERIFY(name != u"Jane Doe"_s);
        QVERIFY(windowNow(m_addon, u"^Smart Data Collector$"_s).isEmpty());
        QVERIFY(select(u"Jane Doe\nSales Director\n\nAddress: 42 Rue Sainte-Catherine\nMontréal (Québec) H2X 1Y4"_s));
        QVERIFY(grab(ContactBox));
        QVERIFY2(!waitForWindow(m_addon, u"^Smart Data Collector$"_s).isEmpty(), "the collector did not open");
        // Nothing went into a box yet: an update now writes the contact back as it was.
        QVERIFY(updateContact());
        QCOMPARE(stored(Contact), name);

        // Update Contact closed the collector; the same text opens it again.
        QVERIFY(waitForNoWindow(m_addon, u"^Smart Data Collector$"_s));
        QVERIFY(grab(ContactBox));
        QVERIFY2(!waitForWindow(m_addon, u"^Smart Data Collector$"_s).isEmpty(), "the collector did not reopen");
        // The user goes on pressing Grab keys: the grab from the browser must have left the keyboard with the add-on.
        QVERIFY(grab(ContactBox, false));
        QVERIFY(grab(FreeBox, false));
        QVERIFY(grab(AddressBox, false));
        QVERIFY(grab(ZipBox, false));
        QVERIFY2(waitForNoWindow(m_addon, u"^Smart Data Collector$"_s),
                 qPrintable(u"the collector stayed with nothing left, or the keys did not reach the add-on; the "
                            u"keyboard is with \"%1\""_s.arg(keyboardHolder())));

        QVERIFY(updateContact());
        QCOMPARE(stored(Contact), u"Jane Doe"_s);
        QCOMPARE(stored(User1), u"Sales Director"_s);
        QCOMPARE(stored(Address1), u"42 Rue Sainte-Catherine"_s);
        QCOMPARE(stored(City), u"Montréal"_s);
        QCOMPARE(stored(State), u"QC"_s);
        QCOMPARE(stored(Zip), u"H2X 1Y4"_s);
    }
};

QTEST_GUILESS_MAIN(TestGrabFromBrowser)
#include "tst_grabfrombrowser.moc"
