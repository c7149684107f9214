// Requests to real servers on 127.0.0.1: FTP (pyftpdlib), HTTP (Python's http.server), and servers that send
// dangerous names, too much, or nothing at all.

#include "TestServers.h"
#include "download/ServiceServer.h"

#include <QSignalSpy>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(corvalent::ServerListing)
Q_DECLARE_METATYPE(corvalent::ServerFailure)

class TestServiceServer : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    test::ServedFolders m_served{m_home};
    test::TestServer m_ftp{u"ftp"_s, m_served.full};
    test::TestServer m_ftpEmpty{u"ftp"_s, m_served.empty};
    test::TestServer m_http{u"http"_s, m_served.full};
    test::TestServer m_hostile{u"hostile"_s};
    test::TestServer m_silent{u"silent"_s};

    // One request to its end; at most the signals of a request that ended are there.
    struct Ended {
        QList<QVariantList> listed, fetched, failed, cancelled;
    };
    static Ended run(ServiceServer& server, const std::function<void()>& start, int boundMs = 20000)
    {
        QSignalSpy listed(&server, &ServiceServer::listed), fetched(&server, &ServiceServer::fetched),
            failed(&server, &ServiceServer::failed), cancelled(&server, &ServiceServer::cancelled);
        start();
        [&] { QTRY_VERIFY_WITH_TIMEOUT(!server.busy(), boundMs); }();
        return {listed, fetched, failed, cancelled};
    }

    QString server(const QString& name) const
    {
        return name == u"ftp" ? m_ftp.url("ftp") : name == u"ftp empty" ? m_ftpEmpty.url("ftp")
             : name == u"http" ? m_http.url("http") : name == u"hostile" ? m_hostile.url("http")
             : name == u"silent ftp" ? m_silent.url("ftp") : m_silent.url("http");
    }

private slots:
    void listing_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<int>("ignored");
        const QStringList both{u"Postal 2.1"_s, u"Yellow pages"_s};
        QTest::newRow("ftp") << u"ftp"_s << both << 0;
        QTest::newRow("ftp, empty folder") << u"ftp empty"_s << QStringList() << 0;
        QTest::newRow("http") << u"http"_s << both << 0;
        QTest::newRow("hostile") << u"hostile"_s << QStringList{u"big"_s, u"fine"_s} << 7;
    }
    void listing()
    {
        QFETCH(QString, server);
        ServiceServer s(this->server(server));
        const Ended ended = run(s, [&] { s.list(); });
        QCOMPARE(ended.listed.size(), 1);
        const auto listing = ended.listed[0][0].value<ServerListing>();
        QStringList shown = ShownServiceNames(listing.names);
        shown.sort();
        QTEST(shown, "shown");
        QTEST(listing.ignored, "ignored");
    }

    void fetch_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("bytes"); // what arrives; none when the request fails
        QTest::addColumn<QString>("failure");  // "function: text" pattern
        QTest::newRow("ftp, byte for byte") << u"ftp"_s << u"Postal 2~1.isf"_s << test::kServedPostal << QString();
        QTest::newRow("http, byte for byte") << u"http"_s << u"Postal 2~1.isf"_s << test::kServedPostal << QString();
        QTest::newRow("ftp, not there") << u"ftp"_s << u"Gone.isf"_s << QByteArray() << u"^FtpGetFile: "_s;
        QTest::newRow("2 MiB refused") << u"hostile"_s << u"big.isf"_s << QByteArray()
                                       << u"^FtpGetFile: The file is larger than 1048576 bytes$"_s;
        // The stalls end within the shortened time-outs below.
        QTest::newRow("ftp server says nothing") << u"silent ftp"_s << u"x.isf"_s << QByteArray()
                                                 << u"^InternetConnect: .*[Tt]ime"_s;
        QTest::newRow("http server says nothing") << u"silent http"_s << u"x.isf"_s << QByteArray()
                                                  << u"^FtpGetFile: .*too slow"_s;
    }
    void fetch()
    {
        QFETCH(QString, server);
        QFETCH(QString, file);
        QFETCH(QString, failure);
        ServiceServer s(this->server(server), TransferLimits{std::chrono::seconds(2), std::chrono::seconds(2)});
        const Ended ended = run(s, [&] { s.fetch(file); });
        if (failure.isEmpty()) {
            QCOMPARE(ended.fetched.size(), 1);
            QTEST(ended.fetched[0][1].toByteArray(), "bytes");
        } else {
            QCOMPARE(ended.failed.size(), 1);
            const auto f = ended.failed[0][0].value<ServerFailure>();
            QVERIFY2(QRegularExpression(failure).match(f.function + u": "_s + f.text).hasMatch(),
                     qPrintable(f.function + u": "_s + f.text));
        }
    }

    void cancelEndsAtOnce()
    {
        ServiceServer s(server(u"silent http"_s));
        QSignalSpy cancelled(&s, &ServiceServer::cancelled), failed(&s, &ServiceServer::failed);
        s.fetch(u"x.isf"_s);
        QTRY_VERIFY(s.busy());
        s.cancel();
        QCOMPARE(cancelled.size(), 1);
        QVERIFY(!s.busy());
        QCOMPARE(failed.size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestServiceServer)
#include "tst_serviceserver.moc"
