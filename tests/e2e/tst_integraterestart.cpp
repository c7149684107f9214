// The integration as a user goes through it, both real programs on an X server: Options > Integrate, a toolbar
// box checked, Close, Yes to the restart. The contact manager closes, comes back on the same database with the
// button in its toolbar, and the add-on comes back beside it.

#include "act/DBusBackend.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"
#include "X11Driver.h"

using namespace corvalent;
using namespace corvalent::test;
using namespace Qt::StringLiterals;

class TestIntegrateRestart : public QObject {
    Q_OBJECT

    TestHome m_home;
    QString m_database = m_home.file(u"Contacts.cvdb"_s);
    QProcess m_host;
    QProcess m_addon;

private slots:
    void initTestCase()
    {
        const QString missing = missingForX11Session();
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        host::writeSampleDatabase(m_database);

        // The restart opens the database "with the desktop": here straight with the contact manager.
        QProcessEnvironment env = programEnvironment(m_home.path());
        env.insert(u"CORVALENT_OPENER"_s, qEnvironmentVariable("CORVALENT_CONTACTS"));
        QVERIFY2(!startHostWindow(m_host, env, m_database).isEmpty(), "the contact manager did not show");
        QVERIFY2(!startAddonWindow(m_addon, env).isEmpty(), "the add-on did not show");
    }

    void cleanupTestCase()
    {
        // The restarted contact manager takes the restarted add-on with it when it closes.
        if (hostOnBus()) {
            DBusBackend backend;
            try {
                backend.create(kProgIdApp)->invoke(u"Command"_s, {qint16(150)});
            } catch (const Error&) {
            }
            (void)QTest::qWaitFor([] { return windowNow(nullptr, u"^Corvalent"_s).isEmpty(); }, kWindowMs);
        }
        stop(m_addon);
        stop(m_host);
    }

    void restartKeepsTheButton()
    {
        const QString addon = windowNow(&m_addon, u"^Corvalent$"_s);
        QVERIFY(type(addon, u"alt+o"_s) && type(addon, u"Return"_s)); // Options > Integrate with Corvalent Contacts...
        const QString integrate = waitForWindow(&m_addon, u"^Integrate with Corvalent Contacts$"_s);
        QVERIFY2(!integrate.isEmpty(), qPrintable(windowTitles(m_addon).join(u", "_s)));
        QVERIFY(type(integrate, u"space"_s) && type(integrate, u"Return"_s)); // the Contacts toolbar, Close
        const QString question = waitForWindow(&m_addon, u"^Restart$"_s);
        QVERIFY2(!question.isEmpty(), qPrintable(windowTitles(m_addon).join(u", "_s)));
        QVERIFY(type(question, u"alt+y"_s));

        QVERIFY2(m_host.waitForFinished(kWindowMs), "the contact manager did not close");
        QVERIFY2(m_addon.waitForFinished(kWindowMs), "the add-on did not end");
        QVERIFY(QTest::qWaitFor(hostOnBus, kWindowMs));
        QVERIFY2(!waitForWindow(nullptr, u"^Corvalent Contacts"_s).isEmpty(), "the contact manager did not come back");
        QVERIFY2(!waitForWindow(nullptr, u"^Corvalent$"_s).isEmpty(), "the add-on did not come back");

        DBusBackend backend;
        QCOMPARE(backend.create(kProgIdApp)->invoke(u"GetOpenDBName"_s).toString(), m_database);
        QVERIFY(backend.create(kProgIdAuxCommands)
                    ->invoke(u"AuxCommandExistsInToolbar"_s, {u"Corvalent"_s, qint16(1)})
                    .toBool());
    }
};

QTEST_GUILESS_MAIN(TestIntegrateRestart)
#include "tst_integraterestart.moc"
