// Requests that do not end well: servers that say nothing, and the user's Cancel. (What servers send is checked
// through the window and the tool.)

#include "TestServers.h"
#include "download/ServiceServer.h"

#include <QSignalSpy>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(corvalent::ServerFailure)

class TestServiceServer : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    test::TestServer m_silent{u"silent"_s};

private slots:
    // Shortened time-outs: each stall ends in seconds, not the 15 and 30 of everyday use.
    void stallEnds_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("failure");
        QTest::newRow("ftp: no greeting") << u"ftp"_s << u"^InternetConnect: .*[Tt]ime"_s;
        QTest::newRow("http: no answer") << u"http"_s << u"^FtpGetFile: .*too slow"_s;
    }
    void stallEnds()
    {
        QFETCH(QString, scheme);
        QFETCH(QString, failure);
        ServiceServer server(m_silent.url(qPrintable(scheme)),
                             TransferLimits{std::chrono::seconds(2), std::chrono::seconds(2)});
        QSignalSpy failed(&server, &ServiceServer::failed);
        server.fetch(u"x.isf"_s);
        QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, 20000);
        const auto f = failed[0][0].value<ServerFailure>();
        QVERIFY2(QRegularExpression(failure).match(f.function + u": "_s + f.text).hasMatch(),
                 qPrintable(f.function + u": "_s + f.text));
        QVERIFY(!server.busy());
    }

    void cancelEndsAtOnce()
    {
        ServiceServer server(m_silent.url("http"));
        QSignalSpy cancelled(&server, &ServiceServer::cancelled), failed(&server, &ServiceServer::failed);
        server.fetch(u"x.isf"_s);
        QVERIFY(server.busy());
        server.cancel();
        QCOMPARE(cancelled.size(), 1);
        QVERIFY(!server.busy());
        QCOMPARE(failed.size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestServiceServer)
#include "tst_serviceserver.moc"
