#include "request/PostPage.h"
#include "request/PostPageCleaner.h"
#include "request/PostalLookup.h"

#include "RequestTestSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include <sys/stat.h>

using namespace corvalent;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using corvalent::test::TestHome;

namespace {

const QByteArray kHead = "<html><body>\r\n"
                         "<span style=visibility:hidden>\r\n"
                         "<form NAME=SearchQuick method=POST action='http://"
    + kPostalLookupHost.toLatin1() + "/tools/pcl/bin/cp_search_response-e.asp'>\r\n";
const QByteArray kTail = "</form></span>\r\n"
                         "<script>\r\n"
                         "document.SearchQuick.submit();\r\n"
                         "</script>\r\n"
                         "</body></html>\r\n";

int modeOf(const QString& path)
{
    struct stat st { };
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return -1;
    return int(st.st_mode & 07777);
}

// Reads the page as a browser does: open, read, close.
QByteArray readPage(const QString& path)
{
    QFile page(path);
    if (!page.open(QIODevice::ReadOnly))
        return QByteArray();
    const QByteArray bytes = page.readAll();
    page.close();
    return bytes;
}

} // namespace

class TestPostPage : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    RecordingPrompter* m_prompter = nullptr;
    RecordingLauncher* m_launcher = nullptr;
    QString m_service;

    QString pagePath() const { return m_home.file(u"~10936986498598137458976958.htm"_s); }

    void writePage(const QString& company)
    {
        WritePostPage(m_service, test::fieldTexts({{}, company}));
        QCOMPARE(m_prompter->texts(), QStringList());
    }

private slots:
    void initTestCase()
    {
        // With the usual mask a file created without care would be readable by everyone.
        ::umask(022);
        m_home.write(u"Countries.ini"_s, "[Countries]\r\nCanada=CA\r\n");
        m_home.write(u"Settings.ini"_s, "[Countries]\r\nCanada=CA\r\n");
        m_service = test::writeService(
            m_home, u"Postal"_s, {u"URL=http://"_s + kPostalLookupMarker + u"lang=e"_s, u"V1=company"_s});
    }
    void init()
    {
        m_prompter = test::installRecordingPrompter();
        m_launcher = test::installRecordingLauncher();
        PostPageCleaner::instance().setDelays(1min, 1min);
    }
    void cleanup()
    {
        PostPageCleaner::instance().deleteNow();
        QFile::remove(pagePath());
    }

    void content_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QByteArray>("expected");

        const QString url = u"URL="_s + kPostalLookupMarker;
        QTest::newRow("one line per sent row, country as shown")
            << QStringList{url, u"CountryFile=Countries.ini"_s, u"V0="_s, u"V2=&street"_s, u"V3=city"_s, u"V5=pc"_s,
                   u"V6=country"_s}
            << QStringList{u"Jean Tremblay"_s, u"Acme"_s, u"12 Côte-des-Neiges"_s, u"Montréal"_s, u"QC"_s, u"H3H 1J9"_s,
                   u"Canada"_s}
            << kHead
                + "<input type=text name=street value=12 Cate-des-Neiges>\r\n"
                  "<input type=text name=city value=Montreal>\r\n"
                  "<input type=text name=pc value=H3H 1J9>\r\n"
                  "<input type=text name=country value=Canada>\r\n"
                + kTail;
        QTest::newRow("empty field skipped")
            << QStringList{url, u"V1=company"_s, u"V5=pc"_s} << QStringList{{}, {}, {}, {}, {}, u"H3H 1J9"_s}
            << kHead + "<input type=text name=pc value=H3H 1J9>\r\n" + kTail;
        QTest::newRow("greater-than left as it is")
            << QStringList{url, u"V1=company"_s} << QStringList{{}, u"A>B & <C>"_s}
            << kHead + "<input type=text name=company value=A>B & <C>>\r\n" + kTail;
        QTest::newRow("written in the ANSI code page")
            << QStringList{url, u"V1=company"_s} << QStringList{{}, u"España €"_s}
            << kHead
                + "<input type=text name=company value=Espa\xf1"
                  "a \x80>\r\n"
                + kTail;
        QTest::newRow("no variables: an empty form that still submits")
            << QStringList{url} << QStringList{u"Jean"_s, u"Acme"_s, u"12 Main"_s} << kHead + kTail;
    }
    void content()
    {
        QFETCH(QStringList, keys);
        QFETCH(QStringList, fields);
        QFETCH(QByteArray, expected);
        const QString service = test::writeService(m_home, QString::fromUtf8(QTest::currentDataTag()), keys);
        QCOMPARE(PostPageContent(service, test::fieldTexts(fields)), expected);
    }

    void writtenPrivateAndOpened()
    {
        // A page left from an earlier run, readable by everyone.
        m_home.write(u"~10936986498598137458976958.htm"_s, "old page");
        QVERIFY(QFile::setPermissions(
            pagePath(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther));
        QByteArray atOpen;
        m_launcher->onOpen = [&](const QString& target) { atOpen = TestHome::read(target); };

        writePage(u"Acme"_s);

        const QByteArray expected = kHead + "<input type=text name=company value=Acme>\r\n" + kTail;
        QCOMPARE(m_launcher->opened().size(), 1);
        QCOMPARE(m_launcher->opened().first().target, pagePath());
        QCOMPARE(m_launcher->opened().first().workingFolder, m_home.programFolder());
        // The page is complete when the browser is asked to open it, and it is still there afterwards.
        QCOMPARE(atOpen, expected);
        QVERIFY(QFileInfo::exists(pagePath()));
        QCOMPARE(modeOf(pagePath()), 0600);
    }

    void linkAtThePathIsNotFollowed_data()
    {
        QTest::addColumn<bool>("targetExists");
        QTest::newRow("link to a file") << true;
        QTest::newRow("dangling link") << false;
    }
    void linkAtThePathIsNotFollowed()
    {
        QFETCH(bool, targetExists);
        const QString target = m_home.path() + u"/elsewhere.txt"_s;
        QFile::remove(target);
        if (targetExists)
            m_home.write(u"../elsewhere.txt"_s, "precious");
        QVERIFY(QFile::link(target, pagePath()));

        writePage(u"Acme"_s);

        QCOMPARE(QFileInfo::exists(target), targetExists);
        if (targetExists)
            QCOMPARE(TestHome::read(target), QByteArray("precious"));
        const QFileInfo page(pagePath());
        QVERIFY(!page.isSymLink());
        QVERIFY(page.isFile());
        QCOMPARE(modeOf(pagePath()), 0600);
        QCOMPARE(TestHome::read(pagePath()), kHead + "<input type=text name=company value=Acme>\r\n" + kTail);
    }

    void deletedOnceRead()
    {
        PostPageCleaner::instance().setDelays(200ms, 1min);
        QSignalSpy deleted(&PostPageCleaner::instance(), &PostPageCleaner::deleted);
        writePage(u"Acme"_s);

        // Unread, it stays for several quiet spells.
        QVERIFY(!deleted.wait(600));
        QVERIFY(QFileInfo::exists(pagePath()));

        QVERIFY(readPage(pagePath()).contains("value=Acme>"));
        QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(pagePath()), 10000);
        QCOMPARE(deleted.size(), 1);
        QCOMPARE(deleted.first().first().toString(), pagePath());
    }

    void deletedAfterTheDeadlineUnread()
    {
        PostPageCleaner::instance().setDelays(1min, 300ms);
        writePage(u"Acme"_s);
        QVERIFY(QFileInfo::exists(pagePath()));
        QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(pagePath()), 10000);
    }

    void secondPageOutlivesTheFirstsDeletion()
    {
        PostPageCleaner::instance().setDelays(300ms, 1min);
        QSignalSpy deleted(&PostPageCleaner::instance(), &PostPageCleaner::deleted);
        writePage(u"First"_s);
        QVERIFY(readPage(pagePath()).contains("value=First>"));
        // Let the cleaner see that the first page was read, so that its deletion is under way.
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();

        writePage(u"Second"_s);
        QVERIFY(!deleted.wait(900));
        QVERIFY(QFileInfo::exists(pagePath()));

        QVERIFY(readPage(pagePath()).contains("value=Second>"));
        QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(pagePath()), 10000);
        QCOMPARE(deleted.size(), 1);
    }

    void deletedWhenTheProgramEnds()
    {
        writePage(u"Acme"_s);
        QVERIFY(QFileInfo::exists(pagePath()));
        // What the application emits as it leaves its event loop.
        QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit", Qt::DirectConnection));
        QVERIFY(!QFileInfo::exists(pagePath()));
    }
};

QTEST_GUILESS_MAIN(TestPostPage)
#include "tst_postpage.moc"
