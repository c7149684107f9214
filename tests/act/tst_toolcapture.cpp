// corvalent-tool capture against the real contact manager: both programs in their own processes on the private
// bus of dbus-run-session.

#include "store/ContactStore.h"
#include "support/BusSupport.h"
#include "support/TestHome.h"

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestToolCapture : public QObject {
    Q_OBJECT

    test::TestHome m_home; // both programs inherit its program folder and settings
    QProcess m_host;

    test::Finished capture(const QString& keys, const QStringList& options = {}) const
    {
        const QString service = m_home.write(u"service.isf"_s,
                                             (u"[Settings]\r\n"_s + QString(keys).replace(u'|', u"\r\n"_s)).toUtf8());
        return test::runToEnd(qEnvironmentVariable("CORVALENT_TOOL"), QStringList{u"capture"_s, service} + options);
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
            const QList<std::pair<int, QString>> fields{{26, u"Jean Tremblay"_s}, {27, u"1500 Rue Peel"_s},
                {38, u"+1 (514) 555-0100"_s}, {65, u"12B Main St"_s}, {67, u"Laval"_s}, {68, u"QC"_s},
                {80, u"tab\there\\"_s}};
            for (const auto& [id, text] : fields)
                store.setFieldText(store.myRecordId(), id, text);
        }
        QVERIFY(test::startHost(m_host, {database}));
    }
    void cleanupTestCase() { test::stopHost(m_host); }

    void capture_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("grab");
        QTest::addColumn<QStringList>("values"); // slots 0, 1, ...; the rest empty
        // Tab and backslash come escaped, so that a line stays a line.
        QTest::newRow("home, derived codes")
            << u"F0=777|F1=778|F2=779|F3=888|F8=80"_s << QStringList{u"--option"_s, u"home"_s} << u"----GGGGGG"_s
            << QStringList{u"12"_s, u"B Main St"_s, u"Laval, QC"_s, {}, {}, {}, {}, {}, u"tab\\there\\\\"_s};
        QTest::newRow("a phone of the list: custom")
            << u"F2=65|F7=888"_s << QStringList{u"--phone"_s, u"38"_s} << u"GGGGGGG-GG"_s
            << QStringList{{}, {}, u"12B Main St"_s, {}, {}, {}, {}, u"(514) 555-0100"_s};
    }
    void capture()
    {
        QFETCH(QString, keys);
        QFETCH(QStringList, options);
        QFETCH(QString, grab);
        QFETCH(QStringList, values);
        QString expected;
        for (int i = 0; i < 10; ++i)
            expected += u"%1\t%2\t%3\n"_s.arg(QString::number(i), grab[i] == u'G' ? u"grab"_s : u"nograb"_s,
                                              values.value(i));
        const test::Finished r = capture(keys, options);
        QCOMPARE(r.err, QString());
        QCOMPARE(r.code, 0);
        QCOMPARE(r.out, expected);
    }

    // Runs last: the contact manager goes away.
    void contactManagerNotRunning()
    {
        m_host.kill();
        QVERIFY(m_host.waitForFinished());
        QTRY_VERIFY_WITH_TIMEOUT(!test::hostOnBus(), 30000);
        const test::Finished r = capture(u"F0=26"_s);
        QCOMPARE(r.code, 1);
        QVERIFY2(r.err.contains(u"the contact manager is not running"_s), qPrintable(r.err));
        QCOMPARE(r.out, QString());
    }
};

QTEST_GUILESS_MAIN(TestToolCapture)
#include "tst_toolcapture.moc"
