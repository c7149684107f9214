// The add-on beside the contact manager as a user has them: both real programs on an X server with a window
// manager (scripts/x11-session.sh runs this test), driven by keyboard through xdotool. What the add-on's boxes hold
// is seen where the user sees it: the address GO opens, which a stand-in for the browser writes down.

#include "act/DBusBackend.h"
#include "request/TextTransforms.h"
#include "store/ContactStore.h"
#include "support/BusSupport.h"
#include "support/TestHome.h"
#include "X11Driver.h"

#include <QFile>
#include <QPoint>
#include <QProcess>
#include <QSettings>
#include <QTest>

#include <optional>

using namespace corvalent;
using namespace corvalent::test;
using namespace Qt::StringLiterals;

class TestAddonFollowsHost : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QString m_database;
    QString m_opened; // one line per address GO opened
    QString m_prefs;
    QProcessEnvironment m_env;
    QProcess m_host;
    QProcess m_addon;
    QString m_hostWindow;
    QString m_addonWindow;
    std::unique_ptr<DBusBackend> m_backend;

    QStringList opened() const
    {
        return QString::fromUtf8(test::TestHome::read(m_opened)).split(u'\n', Qt::SkipEmptyParts);
    }

    qint64 currentId() const { return test::currentContactId(*m_backend); }

    // What GO opens for the Echo service on this contact: the empty boxes are left out, accents folded.
    QString echoAddress(qint64 contactId) const
    {
        host::ContactStore store;
        store.open(m_database);
        QStringList pairs;
        const std::pair<QString, int> rows[] = {{u"name"_s, 26}, {u"company"_s, 25}};
        for (const auto& [name, field] : rows) {
            const QString text = store.fieldText(contactId, field);
            if (!text.isEmpty())
                pairs << name + u'=' + Remove_Accents(text);
        }
        return u"http://127.0.0.1/echo?"_s + pairs.join(u'&');
    }

    void startAddon()
    {
        m_addonWindow = startAddonWindow(m_addon, m_env);
        QVERIFY2(!m_addonWindow.isEmpty(), "the add-on's window did not appear");
    }

private slots:
    void initTestCase()
    {
        const QString missing = missingForX11Session();
        QVERIFY2(missing.isEmpty(), qPrintable(missing));

        m_database = m_home.file(u"Contacts.cvdb"_s);
        host::writeSampleDatabase(m_database);

        // The add-on's folder is written whole, so it is not seeded: a service whose request carries the name and
        // the company, on the first button, which is the one pressed at start.
        m_home.write(u"Presets/Echo.isf"_s, "[Settings]\nName=Echo\nURL=http://127.0.0.1/echo?\nBase=2\n"
                                            "F0=26\nF1=25\nV0=name\nV1=company\n");
        m_home.write(u"Settings.ini"_s, "[Buttons]\n1=Echo\n");
        // The window stays open after GO, so one add-on serves several presses.
        m_prefs = m_home.path() + u"/config/Corvalent/Corvalent.conf"_s;
        QSettings(m_prefs, QSettings::IniFormat).setValue(u"Settings/Close"_s, 1);

        m_opened = m_home.file(u"opened.txt"_s);
        const QString opener =
            m_home.write(u"opener.sh"_s, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + QFile::encodeName(m_opened) + "'\n");
        QVERIFY(QFile::setPermissions(opener, QFile::permissions(opener) | QFileDevice::ExeOwner));

        m_env = programEnvironment(m_home.path());
        m_env.insert(u"CORVALENT_OPENER"_s, opener);
        m_hostWindow = startHostWindow(m_host, m_env, m_database);
        QVERIFY2(!m_hostWindow.isEmpty(), "the contact manager's window did not appear");
        m_backend = std::make_unique<DBusBackend>();

        startAddon();
    }

    void cleanupTestCase()
    {
        m_backend.reset();
        stop(m_addon);
        stop(m_host);
    }

    // The user moves in the contact manager, then presses Return in the add-on: GO opens the address of the contact
    // the contact manager now shows. (Another program moving it is tst_capturefollowshost's.)
    void goCarriesTheNewContact()
    {
        const qint64 before = currentId();
        QVERIFY(type(m_hostWindow, u"alt+Right"_s));
        QTRY_VERIFY_WITH_TIMEOUT(currentId() != before, 10000);
        const QString expected = echoAddress(currentId());
        const QString previous = echoAddress(before);
        QVERIFY(expected != previous);

        // The add-on hears of the move on the bus and the Return key on the X connection; a press that overtakes
        // the event honestly opens the previous contact, so only that answer earns another press.
        QString address;
        for (int press = 0; press < 3 && (address.isEmpty() || address == previous); ++press) {
            const qsizetype lines = opened().size();
            QVERIFY(type(m_addonWindow, u"Return"_s));
            QTRY_VERIFY_WITH_TIMEOUT(opened().size() > lines, 10000);
            QCOMPARE(opened().size(), lines + 1);
            address = opened().last();
        }
        QCOMPARE(address, expected);
        // Nothing but the window itself: no message box on the way.
        QCOMPARE(windowTitles(m_addon), QStringList{u"Corvalent"_s});
    }

    // File > Close Database in the contact manager: the add-on keeps where its window was and ends. The window is
    // moved first, so that what is kept is where it was at the end, whatever was written before.
    void closingTheDatabaseEndsTheAddon()
    {
        // Where the add-on's preferences say its window is; nothing unless both are numbers.
        const auto position = [this]() -> std::optional<QPoint> {
            const QSettings prefs(m_prefs, QSettings::IniFormat);
            bool left = false, top = false;
            const QPoint at(prefs.value(u"Settings/Left"_s).toString().toInt(&left),
                            prefs.value(u"Settings/Top"_s).toString().toInt(&top));
            return left && top ? std::optional(at) : std::nullopt;
        };
        const auto before = position();
        const QString geometry =
            xdotool({u"getwindowgeometry"_s, u"--shell"_s, m_addonWindow}).value_or(QString());
        const qsizetype at = geometry.indexOf(u"\nX="_s);
        QVERIFY2(at >= 0, qPrintable(geometry));
        const int x = geometry.mid(at + 3).section(u'\n', 0, 0).toInt();
        const QString target = QString::number(x < 500 ? x + 250 : x - 250);
        QVERIFY(xdotool({u"windowmove"_s, u"--sync"_s, m_addonWindow, target, u"200"_s}));

        QVERIFY(type(m_hostWindow, u"ctrl+w"_s));
        QByteArray why;
        QVERIFY2(endsCleanly(m_addon, why), why.constData());
        QCOMPARE(m_addon.exitCode(), 0);

        const std::optional<QPoint> after = position();
        QVERIFY2(after && after != before, test::TestHome::read(m_prefs).constData());
        QCOMPARE(m_host.state(), QProcess::Running);
    }

    // File > Exit in the contact manager ends a running add-on with it.
    void exitingTheContactManagerEndsTheAddon()
    {
        m_backend->create(kProgIdApp)->invoke(u"OpenFile"_s, {m_database});
        startAddon();
        QVERIFY(type(m_hostWindow, u"ctrl+q"_s));
        QByteArray why;
        QVERIFY2(endsCleanly(m_addon, why), why.constData());
        QCOMPARE(m_addon.exitCode(), 0);
        QVERIFY2(endsCleanly(m_host, why), why.constData());
    }
};

QTEST_GUILESS_MAIN(TestAddonFollowsHost)
#include "tst_addonfollowshost.moc"
