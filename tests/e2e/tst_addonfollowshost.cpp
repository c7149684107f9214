// The add-on beside the contact manager as a user has them: both real programs on an X server with a window
// manager (scripts/x11-session.sh runs this test), driven by keyboard through xdotool. What the add-on's boxes hold
// is seen where the user sees it: the address GO opens, which a stand-in for the browser writes down.

#include "act/DBusBackend.h"
#include "request/TextTransforms.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"
#include "X11Driver.h"

#include <QFile>
#include <QSettings>

#include <csignal>

using namespace corvalent;
using namespace corvalent::test;
using namespace Qt::StringLiterals;

class TestAddonFollowsHost : public QObject {
    Q_OBJECT

    TestHome m_home;
    QString m_database = m_home.file(u"Contacts.cvdb"_s);
    QString m_opened = m_home.file(u"opened.txt"_s); // one line per address GO opened
    QString m_prefs = m_home.path() + u"/config/Corvalent/Corvalent.conf"_s;
    QProcess m_host;
    QProcess m_addon;
    QString m_hostWindow;
    QString m_addonWindow;
    QProcessEnvironment m_env;
    DBusBackend m_backend;

    QStringList opened() const { return QString::fromUtf8(TestHome::read(m_opened)).split(u'\n', Qt::SkipEmptyParts); }

    // What GO opens for the Echo service on this contact, accents folded.
    QString echoAddress(qint64 contactId) const
    {
        host::ContactStore store;
        store.open(m_database);
        return u"http://127.0.0.1/echo?name="_s + Remove_Accents(store.fieldText(contactId, 26));
    }

private slots:
    void initTestCase()
    {
        const QString missing = missingForX11Session();
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        host::writeSampleDatabase(m_database);

        // A service whose request carries the name, on the first button, which is the one pressed at start; the
        // window stays open after GO, so one add-on serves several presses.
        m_home.write(u"Presets/Echo.isf"_s,
                     "[Settings]\nName=Echo\nURL=http://127.0.0.1/echo?\nBase=2\nF0=26\nV0=name\n");
        m_home.write(u"Settings.ini"_s, "[Buttons]\n1=Echo\n");
        QSettings(m_prefs, QSettings::IniFormat).setValue(u"Settings/Close"_s, 1);
        const QString opener =
            m_home.write(u"opener.sh"_s, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + QFile::encodeName(m_opened) + "'\n");
        QVERIFY(QFile::setPermissions(opener, QFile::permissions(opener) | QFileDevice::ExeOwner));

        m_env = programEnvironment(m_home.path());
        m_env.insert(u"CORVALENT_OPENER"_s, opener);
        m_hostWindow = startHostWindow(m_host, m_env, m_database);
        QVERIFY2(!m_hostWindow.isEmpty(), "the contact manager's window did not appear");
        m_addonWindow = startAddonWindow(m_addon, m_env);
        QVERIFY2(!m_addonWindow.isEmpty(), "the add-on's window did not appear");
    }

    void cleanupTestCase()
    {
        stop(m_addon);
        stop(m_host);
    }

    // The user moves in the contact manager, then presses Return in the add-on: GO opens the address of the contact
    // the contact manager now shows.
    void goCarriesTheNewContact()
    {
        const qint64 before = currentContactId(m_backend);
        QVERIFY(type(m_hostWindow, u"alt+Right"_s));
        QTRY_VERIFY_WITH_TIMEOUT(currentContactId(m_backend) != before, 10000);
        const QString expected = echoAddress(currentContactId(m_backend));
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

    // File > Close Database in the contact manager ends the add-on, and only the add-on: the add-on ends on the
    // event, not on the contact manager leaving the bus. (The window's place kept is tst_mainwindow's.)
    void closingTheDatabaseEndsTheAddon()
    {
        QVERIFY(type(m_hostWindow, u"ctrl+w"_s));
        QVERIFY2(m_addon.waitForFinished(kWindowMs), qPrintable(windowTitles(m_addon).join(u", "_s)));
        QCOMPARE(m_addon.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_addon.exitCode(), 0);
        QCOMPARE(m_host.state(), QProcess::Running);
    }

    // The database opened again over the bus, and File > Exit while the add-on is held up (stopped): it hears of
    // the close only once the contact manager has gone, cannot detach from it, and still ends cleanly.
    void exitingTheContactManagerEndsTheAddon()
    {
        m_backend.create(kProgIdApp)->invoke(u"OpenFile"_s, {m_database});
        QVERIFY(!startAddonWindow(m_addon, m_env).isEmpty());
        QCOMPARE(::kill(pid_t(m_addon.processId()), SIGSTOP), 0);
        QVERIFY(type(m_hostWindow, u"ctrl+q"_s));
        QVERIFY(m_host.waitForFinished(kWindowMs));
        QCOMPARE(m_host.exitStatus(), QProcess::NormalExit);
        QCOMPARE(::kill(pid_t(m_addon.processId()), SIGCONT), 0);
        QVERIFY2(m_addon.waitForFinished(kWindowMs), qPrintable(windowTitles(m_addon).join(u", "_s)));
        QCOMPARE(m_addon.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_addon.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(TestAddonFollowsHost)
#include "tst_addonfollowshost.moc"
