// Requests that do not end well: a server that says nothing, and the user's Cancel. (What servers send is checked
// through the window and the tool.)

#include "download/ServiceServer.h"
#include "support/TestHome.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(corvalent::ServerFailure)

class TestServiceServer : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QTcpServer m_silent; // takes connections and never says a word

    QString silentUrl(const QString& scheme) const
    {
        return u"%1://127.0.0.1:%2/"_s.arg(scheme).arg(m_silent.serverPort());
    }

private slots:
    void initTestCase() { QVERIFY(m_silent.listen(QHostAddress::LocalHost)); }

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
        ServiceServer server(silentUrl(scheme), TransferLimits{std::chrono::seconds(2), std::chrono::seconds(2)});
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
        ServiceServer server(silentUrl(u"http"_s));
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
