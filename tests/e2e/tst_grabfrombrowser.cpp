// Grab as a user has it: a real Firefox showing a page with several lines selected, the add-on and the contact
// manager, all on an X server with a window manager (scripts/x11-session.sh runs this test), driven through xdotool.
// What the grab brought is seen where it ends up: Update Contact writes the boxes into the contact manager's
// database. Firefox shows a page served from here, whose selection the test sets (PickPage.h).

#include "act/DBusBackend.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"
#include "PickPage.h"
#include "X11Driver.h"

using namespace corvalent;
using namespace corvalent::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int kBrowserMs = 60000; // Firefox's first start on a fresh profile, on a busy machine
constexpr int kGrabMs = 20000;    // a grab to run to its end; the add-on gives up on the browser long before

enum FieldId { Contact = 26, Address1 = 27, City = 30, State = 31, Zip = 32, User1 = 80 };

// The boxes' rows as the service names them: the contact's own fields, and User 1 on the first free row.
const char kService[] = "[Settings]\nName=Grab\nURL=http://127.0.0.1/lookup?\nBase=2\n"
                        "F0=26\nF1=25\nF2=27\nF3=30\nF4=31\nF5=32\nF6=33\nF7=80\nF8=0\nF9=0\n"
                        "V0=name\nV1=company\n";

} // namespace

class TestGrabFromBrowser : public QObject {
    Q_OBJECT

    TestHome m_home;
    QString m_database = m_home.file(u"Contacts.cvdb"_s);
    PickPage m_page;
    QProcess m_host;
    QProcess m_addon;
    QProcess m_browser;
    QString m_addonWindow;
    DBusBackend m_backend;

    // Fields of the contact manager's current contact, as its database holds them.
    QStringList stored(std::initializer_list<int> fieldIds)
    {
        host::ContactStore store;
        store.open(m_database);
        const qint64 id = currentContactId(m_backend);
        QStringList texts;
        for (const int fieldId : fieldIds)
            texts << store.fieldText(id, fieldId);
        return texts;
    }

    // Whether one of the add-on's windows has the keyboard.
    bool addonHasKeyboard() const
    {
        const auto pid = xdotool({u"getwindowfocus"_s, u"getwindowpid"_s}, true);
        return pid && pid->trimmed().toLongLong() == m_addon.processId();
    }

private slots:
    void initTestCase()
    {
        const QString missing = missingForX11Session();
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
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
        m_addonWindow = startAddonWindow(m_addon, env);
        QVERIFY2(!m_addonWindow.isEmpty(), "the add-on's window did not appear");
        QVERIFY2(!waitForWindow(&m_browser, u"^Pick "_s, kBrowserMs).isEmpty(), TestHome::read(log).constData());
    }

    void cleanupTestCase()
    {
        stop(m_browser);
        stop(m_addon);
        stop(m_host);
    }

    // Several lines selected in the page open the Smart Data Collector; each further Grab takes the collector's
    // current line, cleaned of its label, into its own box, and the collector goes once its lines are handed out.
    // Update Contact, answered Yes, writes the boxes into the contact.
    void severalLinesAreHandedOutOneByOne()
    {
        const std::initializer_list<int> fields{Contact, User1, Address1, City, State, Zip};
        const QStringList expected{u"Jane Doe"_s, u"Sales Director"_s, u"42 Rue Sainte-Catherine"_s, u"Montréal"_s,
                                   u"QC"_s, u"H2X 1Y4"_s};
        QVERIFY(stored(fields) != expected);
        const QString text =
            u"Jane Doe\nSales Director\n\nAddress: 42 Rue Sainte-Catherine\nMontréal (Québec) H2X 1Y4"_s;
        const int round = m_page.show(text);
        QVERIFY2(QTest::qWaitFor([&] { return m_page.selected(round).has_value(); }, 30000), "the page did not show");
        QCOMPARE(*m_page.selected(round), text);

        QVERIFY(type(m_addonWindow, u"ctrl+1"_s));
        // The grab gives the keyboard to the browser for the copy and takes it back at its end, once the text is in:
        // a key sent before that would be handled in the middle of it.
        const auto collectorShown = [&] { return !windowNow(&m_addon, u"^Smart Data Collector$"_s).isEmpty(); };
        QVERIFY2(QTest::qWaitFor([&] { return collectorShown() && addonHasKeyboard(); }, kGrabMs),
                 collectorShown() ? "the grab did not give the keyboard back to the add-on" : "no collector");
        // The user goes on pressing Grab keys (Contact, the free row, Address 1, Zip) without touching the mouse:
        // the grab from the browser must have left the keyboard with the add-on.
        for (const QString& key : {u"ctrl+1"_s, u"ctrl+8"_s, u"ctrl+3"_s, u"ctrl+6"_s})
            QVERIFY(xdotool({u"key"_s, u"--clearmodifiers"_s, key}));
        QTRY_VERIFY2_WITH_TIMEOUT(!collectorShown(),
                                  "the collector stayed with nothing left, or the keys did not reach the add-on",
                                  kWindowMs);

        QVERIFY(type(m_addonWindow, u"alt+u"_s));
        const QString question = waitForWindow(&m_addon, u"^App\\.title$"_s);
        QVERIFY2(!question.isEmpty(), qPrintable(windowTitles(m_addon).join(u", "_s)));
        QVERIFY(type(question, u"y"_s));
        QTRY_COMPARE_WITH_TIMEOUT(stored(fields), expected, kGrabMs);
    }
};

QTEST_GUILESS_MAIN(TestGrabFromBrowser)
#include "tst_grabfrombrowser.moc"
