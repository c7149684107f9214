// What is taken from a server's listing: plain names only, whatever the server sends.

#include "download/ServerListing.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestServerListing : public QObject {
    Q_OBJECT

private slots:
    void listings_data()
    {
        QTest::addColumn<bool>("ftp"); // an FTP name list, otherwise a listing page
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<int>("ignored");
        QTest::newRow("ftp, LF only") << true << "a.isf\nb.isf\n"_ba << QStringList{u"a.isf"_s, u"b.isf"_s} << 0;
        QTest::newRow("ftp, hostile")
            << true
            << "../x.isf\r\na/b.isf\r\nline\nbreak.isf\r\na\\b.isf\r\n.hidden.isf\r\nbell\a.isf\r\ncaf\xe9.isf\r\n"
               ".\r\n..\r\n"_ba + QByteArray(201, 'x') + "\r\n" + QByteArray(200, 'y') + "\r\nok.isf\r\n"
            << QStringList{QString(200, u'y'), u"ok.isf"_s} << 8;
        QTest::newRow("python http.server")
            << false
            << "<ul>\n<li><a href=\"Postal%202~1.isf\">Postal 2~1.isf</a></li>\n<li><a href=\"sub/\">sub/</a></li>\n"
               "<li><a href=\"caf%C3%A9.isf\">caf\xc3\xa9.isf</a></li>\n</ul>"_ba
            << QStringList{u"Postal 2~1.isf"_s, u"café.isf"_s} << 0;
        QTest::newRow("apache")
            << false
            << "<th><a href=\"?C=N;O=D\">Name</a></th><tr><td><a href=\"/services/\">Parent Directory</a></td></tr>"
               "<tr><td><a href=\"A&amp;B.isf\">A&amp;B.isf</a></td></tr><a HREF='it&#39;s.isf'>x</a>"_ba
            << QStringList{u"A&B.isf"_s, u"it's.isf"_s} << 0;
        QTest::newRow("page, hostile")
            << false
            << "<a href=\"../x.isf\"></a><a href=\"line%0Abreak.isf\"></a><a href=\"%2e%2e%2fy.isf\"></a>"
               "<a href=\"http://elsewhere/z.isf\"></a><a href=\"%2Ehidden.isf\"></a><a href=\"ok.isf\">"_ba
            << QStringList{u"ok.isf"_s} << 5;
    }
    void listings()
    {
        QFETCH(bool, ftp);
        QFETCH(QByteArray, body);
        const ServerListing listing = ftp ? ParseFtpNameList(body) : ParseHtmlListing(body);
        QTEST(listing.names, "names");
        QTEST(listing.ignored, "ignored");
    }

    // Only ".isf" entries are services; "~" shows as "." and goes back to "~" in the file name.
    void shownNames()
    {
        QCOMPARE(ShownServiceNames({u"Yellow pages.isf"_s, u"White~pages.isf"_s, u"notes.txt"_s, u"X.ISF"_s,
                                    u"a.isf.bak"_s, u"a~b~c.isf"_s}),
                 (QStringList{u"Yellow pages"_s, u"White.pages"_s, u"a.b.c"_s}));
        QCOMPARE(ServiceFileName(u"a.b.c"_s), u"a~b~c.isf"_s);
    }
};

QTEST_GUILESS_MAIN(TestServerListing)
#include "tst_serverlisting.moc"
