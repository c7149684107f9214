// corvalent-contacts as the add-on meets it: the real program in its own process on the private bus of
// dbus-run-session, reached through DBusBackend. The test reads the same database file directly to know what the
// answers must be.

#include "act/DBusBackend.h"
#include "common/Error.h"
#include "store/ContactStore.h"

#include <QDBusConnectionInterface>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using namespace corvalent;
using namespace corvalent::dbuswire;
using namespace Qt::StringLiterals;

namespace {

struct Finished {
    int code = -1;
    QString err;
};

// 0 when the call succeeds.
int errorNumber(const std::function<void()>& call)
{
    try {
        call();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

} // namespace

class TestContactsProgram : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_database;
    QProcess m_host;
    std::unique_ptr<DBusBackend> m_backend;
    AutomationPtr m_app, m_views, m_view, m_contact;

    // A user of their own: home, data and settings below the test's folder.
    QProcessEnvironment privateEnvironment(const QString& user = u"user"_s) const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        env.insert(u"HOME"_s, m_dir.filePath(user + u"/home"_s));
        env.insert(u"XDG_DATA_HOME"_s, m_dir.filePath(user + u"/data"_s));
        env.insert(u"XDG_CONFIG_HOME"_s, m_dir.filePath(user + u"/config"_s));
        return env;
    }
    Finished run(const QStringList& args) const
    {
        QProcess process;
        process.setProcessEnvironment(privateEnvironment());
        process.start(qEnvironmentVariable("CORVALENT_CONTACTS"), args);
        if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardError())};
    }
    static bool hostOnBus()
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(kBusName);
    }
    QString currentId() const { return m_view->invoke(u"GetCurrentID"_s).toString(); }

private slots:
    void initTestCase()
    {
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
        QVERIFY(!hostOnBus());
        m_database = m_dir.filePath(u"Contacts.cvdb"_s);
        QCOMPARE(run({u"--sample"_s, m_database}).code, 0);

        m_host.setProcessEnvironment(privateEnvironment());
        m_host.setProcessChannelMode(QProcess::ForwardedChannels);
        m_host.start(qEnvironmentVariable("CORVALENT_CONTACTS"), {m_database});
        QVERIFY(m_host.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(hostOnBus(), 60000);

        m_backend = std::make_unique<DBusBackend>();
        m_app = m_backend->create(kProgIdApp);
        m_views = toObject(m_app->invoke(u"Views"_s));
        QVERIFY(m_views);
        m_view = toObject(m_views->invoke(u"Create"_s, {qint16(1), u"CV"_s}));
        QVERIFY(m_view);
        const AutomationPtr database = m_backend->create(kProgIdDatabase);
        m_contact = toObject(database->invoke(u"Contact"_s));
        QVERIFY(m_contact);
    }
    void cleanupTestCase()
    {
        m_app.reset();
        m_views.reset();
        m_view.reset();
        m_contact.reset();
        m_backend.reset();
        if (m_host.state() != QProcess::NotRunning) {
            m_host.kill();
            m_host.waitForFinished();
        }
    }

    void readsTheCurrentContact_data()
    {
        QTest::addColumn<int>("field");
        for (int field : {25, 26, 27, 28, 30, 31, 32, 33, 35, 40})
            QTest::addRow("field %d", field) << field;
    }
    void readsTheCurrentContact()
    {
        QFETCH(int, field);
        QCOMPARE(toObject(m_views->invoke(u"GetActive"_s))->invoke(u"Type"_s).toInt(), 2);
        host::ContactStore store;
        store.open(m_database);
        const qint64 id = currentId().toLongLong();
        QVERIFY(store.contactExists(id));
        QCOMPARE(m_view->invoke(u"GetField"_s, {qint16(field)}).toString(), store.fieldText(id, field));
        QCOMPARE(m_contact->invoke(u"Data"_s, {qint16(field)}).toString(), store.fieldData(id, field));
    }

    void anotherClientMovesTheCurrentContact()
    {
        host::ContactStore store;
        store.open(m_database);
        const QVector<qint64> ids = store.allContactIds();
        QVERIFY(ids.size() > 2);
        const QString target = QString::number(ids.at(ids.size() / 2));
        QVERIFY(target != currentId());

        QSignalSpy moved(&m_backend->events(), &HostEvents::OnContactPosChange);
        const QDBusConnection otherBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"mover"_s);
        {
            DBusBackend mover(otherBus);
            const AutomationPtr database = mover.create(kProgIdDatabase);
            toObject(database->invoke(u"Contact"_s))->invoke(u"GoTo"_s, {target});
        }
        QVERIFY(moved.wait(10000));
        QCOMPARE(moved.first().first().toString(), target);
        QCOMPARE(currentId(), target);
        QCOMPARE(m_view->invoke(u"GetField"_s, {qint16(26)}).toString(), store.fieldText(target.toLongLong(), 26));
    }

    void setFieldChangesTheContact()
    {
        QSignalSpy changed(&m_backend->events(), &HostEvents::OnContactChange);
        const QString text = u"Bureau 9 — étage ✓"_s;
        m_view->invoke(u"SetField"_s, {qint16(28), text});
        QVERIFY(changed.wait(10000));
        QCOMPARE(changed.first().first().toString(), currentId());
        QCOMPARE(m_view->invoke(u"GetField"_s, {qint16(28)}).toString(), text);
        host::ContactStore store;
        store.open(m_database);
        QCOMPARE(store.fieldText(currentId().toLongLong(), 28), text);
    }

    // Calls no add-on makes: each is refused with its error number, and the contact manager answers afterwards.
    void hostileCallsAreRefused_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("member");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QList<int>>("numbers");
        const QString huge(1 << 20, u'7');
        QTest::newRow("unknown member") << u"view"_s << u"Explode"_s << QVariantList{} << QList<int>{438};
        QTest::newRow("1 MB member name") << u"view"_s << QString(1 << 20, u'G') << QVariantList{} << QList<int>{438};
        QTest::newRow("text for a number") << u"contact"_s << u"Data"_s << QVariantList{u"Phone"_s} << QList<int>{13};
        QTest::newRow("text for a view type") << u"views"_s << u"Create"_s << QVariantList{u"one"_s, u"CV"_s}
                                              << QList<int>{13};
        QTest::newRow("no field") << u"view"_s << u"GetField"_s << QVariantList{} << QList<int>{5};
        QTest::newRow("too many") << u"app"_s << u"Command"_s << QVariantList{qint16(104), qint16(1)}
                                  << QList<int>{5};
        QTest::newRow("1 MB contact ID") << u"contact"_s << u"GoTo"_s << QVariantList{huge} << QList<int>{5, 440};
        QTest::newRow("1 MB database name") << u"app"_s << u"OpenFile"_s << QVariantList{huge} << QList<int>{5, 53, 440};
    }
    void hostileCallsAreRefused()
    {
        QFETCH(QString, target);
        QFETCH(QString, member);
        QFETCH(QVariantList, args);
        QFETCH(QList<int>, numbers);
        const QHash<QString, AutomationPtr> objects = {
            {u"app"_s, m_app}, {u"views"_s, m_views}, {u"view"_s, m_view}, {u"contact"_s, m_contact}};
        const QString before = currentId();
        const int number = errorNumber([&] { objects.value(target)->invoke(member, args); });
        QVERIFY2(numbers.contains(number), qPrintable(QString::number(number)));
        QCOMPARE(currentId(), before);
    }

    void aSecondProgramExitsWithOne()
    {
        const Finished second = run({m_database});
        QCOMPARE(second.code, 1);
        QVERIFY2(second.err.contains(u"corvalent-contacts is already running"_s), qPrintable(second.err));
        QVERIFY(hostOnBus());
        QVERIFY(!currentId().isEmpty());
    }

    void writtenDatabasesOpen_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("minimum");
        QTest::addColumn<int>("maximum");
        QTest::newRow("sample") << QStringList{u"--sample"_s} << 20 << 200;
        QTest::newRow("generated") << QStringList{u"--generate"_s, u"1000"_s} << 1000 << 1000;
    }
    void writtenDatabasesOpen()
    {
        QFETCH(QStringList, args);
        QFETCH(int, minimum);
        QFETCH(int, maximum);
        const QString file = m_dir.filePath(QString::fromLatin1(QTest::currentDataTag()) + u".cvdb"_s);
        QCOMPARE(run(args + QStringList{file}).code, 0);
        {
            host::ContactStore store;
            store.open(file);
            QVERIFY(store.contactCount() >= minimum && store.contactCount() <= maximum);
        }
        // Never over an existing file.
        QFile original(file);
        QVERIFY(original.open(QIODevice::ReadOnly));
        const QByteArray bytes = original.readAll();
        QCOMPARE(run(args + QStringList{file}).code, 1);
        QVERIFY(original.seek(0));
        QCOMPARE(original.readAll(), bytes);
    }

    void wrongCommandLinesExitWithTwo_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::newRow("unknown option") << QStringList{u"--frobnicate"_s};
        QTest::newRow("count not a number") << QStringList{u"--generate"_s, u"many"_s, u"x.cvdb"_s};
        QTest::newRow("no count") << QStringList{u"--generate"_s, u"0"_s, u"x.cvdb"_s};
        QTest::newRow("sample without file") << QStringList{u"--sample"_s};
        QTest::newRow("two databases") << QStringList{u"a.cvdb"_s, u"b.cvdb"_s};
    }
    void wrongCommandLinesExitWithTwo()
    {
        QFETCH(QStringList, args);
        const Finished finished = run(args);
        QCOMPARE(finished.code, 2);
        QVERIFY(!finished.err.isEmpty());
    }

    void aKilledHostFailsCallsAndIsReported()
    {
        QSignalSpy lost(&m_backend->events(), &HostEvents::hostLost);
        m_host.kill();
        QVERIFY(m_host.waitForFinished(10000));
        const int number = errorNumber([&] { m_view->invoke(u"GetField"_s, {qint16(26)}); });
        QVERIFY2(number == 429 || number == 440, qPrintable(QString::number(number)));
        QTRY_COMPARE_WITH_TIMEOUT(lost.size(), 1, 10000);
        QCOMPARE(errorNumber([&] { m_backend->create(kProgIdApp); }), 429);
    }

    // Runs after the kill, with the name free. Without a file the program opens the last database, or the first
    // time a sample of its own; Command 150 ends it.
    void withoutAFileOpensTheLastOrTheSample_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("expected");
        QTest::newRow("last database") << u"user"_s << m_database;
        QTest::newRow("first run") << u"newcomer"_s << m_dir.filePath(u"newcomer/data/corvalent-contacts/Sample.cvdb"_s);
    }
    void withoutAFileOpensTheLastOrTheSample()
    {
        QFETCH(QString, user);
        QFETCH(QString, expected);
        QProcess host;
        host.setProcessEnvironment(privateEnvironment(user));
        host.setProcessChannelMode(QProcess::ForwardedChannels);
        host.start(qEnvironmentVariable("CORVALENT_CONTACTS"), {});
        QTRY_VERIFY_WITH_TIMEOUT(hostOnBus(), 60000);
        DBusBackend backend;
        const AutomationPtr app = backend.create(kProgIdApp);
        QCOMPARE(app->invoke(u"GetOpenDBName"_s).toString(), QFileInfo(expected).absoluteFilePath());
        QVERIFY(!toObject(toObject(app->invoke(u"Views"_s))->invoke(u"Create"_s, {qint16(1), u"CV"_s}))
                     ->invoke(u"GetField"_s, {qint16(26)}).toString().isEmpty());
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

    // With the name free, the program gets as far as opening the file.
    void aFileThatIsNoDatabaseIsRefused()
    {
        const QString file = m_dir.filePath(u"notes.cvdb"_s);
        QFile notes(file);
        QVERIFY(notes.open(QIODevice::WriteOnly));
        notes.write("Not a database\n");
        notes.close();
        const Finished finished = run({file});
        QCOMPARE(finished.code, 1);
        QVERIFY2(finished.err.contains(u"cannot open"_s), qPrintable(finished.err));
        QCOMPARE(QFile(file).size(), qint64(15));
        QVERIFY(!hostOnBus());
    }
};

QTEST_GUILESS_MAIN(TestContactsProgram)
#include "tst_contactsprogram.moc"
