// corvalent-tool capture against the real contact manager: both programs in their own processes on the private
// bus of dbus-run-session.

#include "common/DBusWire.h"
#include "store/ContactStore.h"
#include "support/TestHome.h"

#include <QDBusConnectionInterface>
#include <QProcess>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestToolCapture : public QObject {
    Q_OBJECT

    test::TestHome m_home; // both programs inherit its program folder and settings
    QProcess m_host;

    struct Run {
        int code = -1;
        QString out;
        QString err;
    };
    static Run tool(const QStringList& args)
    {
        QProcess process;
        process.start(qEnvironmentVariable("CORVALENT_TOOL"), QStringList{u"capture"_s} + args);
        if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    static bool hostOnBus() { return QDBusConnection::sessionBus().interface()->isServiceRegistered(dbuswire::kBusName); }
    QString service(const QString& keys) const
    {
        return m_home.write(u"service.isf"_s, (u"[Settings]\r\n"_s + QString(keys).replace(u'|', u"\r\n"_s)).toUtf8());
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
        const QString database = m_home.file(u"contacts.cvdb"_s);
        {
            // The contact manager starts on the first contact of its lookup: My Record.
            host::ContactStore store;
            store.create(database);
            const qint64 me = store.myRecordId();
            const QList<std::pair<int, QString>> fields{{26, u"Jean Tremblay"_s}, {25, u"Acme Ltée"_s},
                {27, u"1500 Rue Peel"_s}, {30, u"Montréal"_s}, {31, u"QC"_s}, {32, u"H3A 1S9"_s}, {33, u"Canada"_s},
                {35, u"+1 (514) 555-0199"_s}, {38, u"+1 (514) 555-0100"_s}, {65, u"12B Main St"_s}, {67, u"Laval"_s},
                {68, u"QC"_s}, {69, u"H7A 1A1"_s}, {70, u"Canada"_s}, {80, u"tab\there\\"_s}};
            for (const auto& [id, text] : fields)
                store.setFieldText(me, id, text);
        }
        m_host.setProcessChannelMode(QProcess::ForwardedChannels);
        m_host.start(qEnvironmentVariable("CORVALENT_CONTACTS"), {database});
        QVERIFY(m_host.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(hostOnBus(), 60000);
    }
    void cleanupTestCase()
    {
        if (m_host.state() != QProcess::NotRunning) {
            m_host.kill();
            m_host.waitForFinished();
        }
    }

    void capture_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("expected"); // "|" between lines
        const QString defaults = u"F0=26|F1=25|F2=27|F3=30|F4=31|F5=32|F6=33|F7=0|F8=0|F9=0"_s;
        QTest::newRow("business") << defaults << QStringList()
            << u"0\tgrab\tJean Tremblay|1\tgrab\tAcme Ltée|2\tgrab\t1500 Rue Peel|3\tgrab\tMontréal|4\tgrab\tQC|"
               "5\tgrab\tH3A 1S9|6\tgrab\tCanada|7\tgrab\t|8\tgrab\t|9\tgrab\t"_s;
        QTest::newRow("home, derived codes")
            << u"F0=777|F1=778|F2=779|F3=888|F8=80"_s << QStringList{u"--option"_s, u"home"_s}
            << u"0\tnograb\t12|1\tnograb\tB Main St|2\tnograb\tLaval, QC|3\tnograb\t|4\tgrab\t|5\tgrab\t|6\tgrab\t|"
               "7\tgrab\t|8\tgrab\ttab\\there\\\\|9\tgrab\t"_s;
        QTest::newRow("a phone of the list: custom") << u"F2=65|F7=888"_s << QStringList{u"--phone"_s, u"38"_s}
            << u"0\tgrab\t|1\tgrab\t|2\tgrab\t12B Main St|3\tgrab\t|4\tgrab\t|5\tgrab\t|6\tgrab\t|"
               "7\tnograb\t(514) 555-0100|8\tgrab\t|9\tgrab\t"_s;
    }
    void capture()
    {
        QFETCH(QString, keys);
        QFETCH(QStringList, options);
        QFETCH(QString, expected);
        const Run r = tool(QStringList{service(keys)} + options);
        QCOMPARE(r.err, QString());
        QCOMPARE(r.code, 0);
        QCOMPARE(r.out, expected.replace(u'|', u'\n') + u'\n');
    }

    // Runs last: the contact manager goes away.
    void contactManagerNotRunning()
    {
        m_host.kill();
        QVERIFY(m_host.waitForFinished());
        QTRY_VERIFY_WITH_TIMEOUT(!hostOnBus(), 30000);
        const Run r = tool({service(u"F0=26"_s)});
        QCOMPARE(r.code, 1);
        QVERIFY2(r.err.contains(u"the contact manager is not running"_s), qPrintable(r.err));
        QCOMPARE(r.out, QString());
    }
};

QTEST_GUILESS_MAIN(TestToolCapture)
#include "tst_toolcapture.moc"
