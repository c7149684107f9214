// corvalent-contacts as the add-on meets it: the real program in its own process on the private bus of
// dbus-run-session, reached through DBusBackend. What its objects answer is tests/host's; here only what needs the
// program itself: its command line, the databases it writes and opens, and how it ends.

#include "act/DBusBackend.h"
#include "store/ContactStore.h"
#include "support/BusSupport.h"
#include "support/TestHome.h"

#include <QSignalSpy>
#include <QTemporaryDir>

using namespace corvalent;
using namespace corvalent::dbuswire;
using namespace Qt::StringLiterals;

class TestContactsProgram : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_database = m_dir.filePath(u"Contacts.cvdb"_s);
    QProcess m_host;

    // A user of their own: home, data and settings below the test's folder.
    QProcessEnvironment environment(const QString& user = u"user"_s) const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"HOME"_s, m_dir.filePath(user + u"/home"_s));
        env.insert(u"XDG_DATA_HOME"_s, m_dir.filePath(user + u"/data"_s));
        env.insert(u"XDG_CONFIG_HOME"_s, m_dir.filePath(user + u"/config"_s));
        return env;
    }
    test::Finished run(const QStringList& args) const
    {
        return test::runToEnd(qEnvironmentVariable("CORVALENT_CONTACTS"), args, environment());
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
        QVERIFY(!test::hostOnBus());
        QCOMPARE(run({u"--sample"_s, m_database}).code, 0);
        m_host.setProcessEnvironment(environment());
        QVERIFY(test::startHost(m_host, {m_database}));
    }
    void cleanupTestCase() { test::stopHost(m_host); }

    // With the contact manager running; it still answers afterwards.
    void commandLinesThatEndAtOnce_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::newRow("second program") << QStringList{m_database} << 1;
        QTest::newRow("unknown option") << QStringList{u"--frobnicate"_s} << 2;
        QTest::newRow("count not a number") << QStringList{u"--generate"_s, u"many"_s, u"x.cvdb"_s} << 2;
        QTest::newRow("no count") << QStringList{u"--generate"_s, u"0"_s, u"x.cvdb"_s} << 2;
        QTest::newRow("sample without file") << QStringList{u"--sample"_s} << 2;
        QTest::newRow("two databases") << QStringList{u"a.cvdb"_s, u"b.cvdb"_s} << 2;
    }
    void commandLinesThatEndAtOnce()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        const test::Finished finished = run(args);
        QCOMPARE(finished.code, code);
        QVERIFY2(code == 2 ? !finished.err.isEmpty() : finished.err.contains(u"is already running"_s),
                 qPrintable(finished.err));
        DBusBackend backend;
        QVERIFY(test::currentContactId(backend) > 0);
    }

    // --generate writes a database the store opens (--sample is initTestCase's), never over an existing file.
    void writtenDatabasesOpen()
    {
        const QString file = m_dir.filePath(u"generated.cvdb"_s);
        const QStringList args{u"--generate"_s, u"1000"_s, file};
        QCOMPARE(run(args).code, 0);
        host::ContactStore store;
        store.open(file);
        QCOMPARE(store.contactCount(), 1000);
        const QByteArray bytes = test::TestHome::read(file);
        QCOMPARE(run(args).code, 1);
        QCOMPARE(test::TestHome::read(file), bytes);
    }

    // Runs last, with the name free. Without a file the program opens the last database, or the first time a
    // sample of its own; Command 150 ends it.
    void withoutAFileOpensTheLastOrTheSample_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("expected");
        QTest::newRow("last database") << u"user"_s << m_database;
        QTest::newRow("first run") << u"newcomer"_s
                                   << m_dir.filePath(u"newcomer/data/corvalent-contacts/Sample.cvdb"_s);
    }
    void withoutAFileOpensTheLastOrTheSample()
    {
        QFETCH(QString, user);
        QFETCH(QString, expected);
        test::stopHost(m_host);
        QTRY_VERIFY_WITH_TIMEOUT(!test::hostOnBus(), 10000);
        QProcess host;
        host.setProcessEnvironment(environment(user));
        QVERIFY(test::startHost(host, {}));
        DBusBackend backend;
        const AutomationPtr app = backend.create(kProgIdApp);
        QCOMPARE(app->invoke(u"GetOpenDBName"_s).toString(), QFileInfo(expected).absoluteFilePath());
        QVERIFY(test::currentContactId(backend) > 0);
        QSignalSpy closing(&backend.events(), &HostEvents::OnActUserWantsToClose);
        QSignalSpy closed(&backend.events(), &HostEvents::OnDatabaseClose);
        app->invoke(u"Command"_s, {qint16(150)});
        QVERIFY(host.waitForFinished(30000));
        QCOMPARE(host.exitStatus(), QProcess::NormalExit);
        QCOMPARE(host.exitCode(), 0);
        // Sent before the program ended, so they are here even though it has gone.
        QTRY_COMPARE_WITH_TIMEOUT(closing.size(), 1, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(closed.size(), 1, 10000);
    }
};

QTEST_GUILESS_MAIN(TestContactsProgram)
#include "tst_contactsprogram.moc"
