#include "request/PostPage.h"
#include "request/PostPageCleaner.h"

#include "support/RequestSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

#include <sys/stat.h>

using namespace corvalent;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using corvalent::test::TestHome;

const QString kPage = u"~10936986498598137458976958.htm"_s;

class TestPostPage : public QObject {
    Q_OBJECT

    TestHome m_home;
    QString m_service;
    RecordingPrompter* m_prompter = nullptr;
    RecordingLauncher* m_launcher = nullptr;

    QString page() const { return m_home.file(kPage); }
    bool exists() const { return QFileInfo::exists(page()); }
    void write(const QString& fields) const { WritePostPage(m_service, test::fieldTexts(fields)); }
    // Reads the page as the browser does: open, read, close.
    bool read(const QByteArray& company) const { return TestHome::read(page()).contains("value=" + company + '>'); }

private slots:
    void initTestCase()
    {
        ::umask(022); // a page created without care would then be readable by everyone
        m_home.write(u"Countries.ini"_s, "[Countries]\r\nCanada=CA\r\n");
        m_service = test::writeService(m_home, test::kPostalUrl + u"|CountryFile=Countries.ini|V0=|V1=company"
                                                                  "|V2=&street|V3=city|V5=pc|V6=country"_s, u"P"_s);
    }
    void init()
    {
        m_prompter = test::install<RecordingPrompter, Prompter>();
        m_launcher = test::install<RecordingLauncher, Launcher>();
        PostPageCleaner::instance().setDelays(1min, 1min);
    }
    void cleanup()
    {
        QCOMPARE(m_prompter->texts(), QStringList());
        PostPageCleaner::instance().deleteNow();
        QFile::remove(page());
    }

    void written_data()
    {
        QTest::addColumn<bool>("link");
        QTest::newRow("over an old page readable by all") << false;
        QTest::newRow("over a link to another file") << true;
    }
    void written()
    {
        QFETCH(bool, link);
        const QString elsewhere = m_home.write(u"elsewhere.txt"_s, "precious");
        const auto readableByAll = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther;
        QVERIFY(link ? QFile::link(elsewhere, page())
                     : QFile::setPermissions(m_home.write(kPage, "old"), readableByAll));
        QByteArray atOpen;
        m_launcher->onOpen = [&](const QString& target) { atOpen = TestHome::read(target); };

        write(u"0=Jean|1=España <Ltd> €|2=12 Côte-des-Neiges|5=H3H 1J9|6=Canada"_s);

        QCOMPARE(atOpen, test::postPage("<input type=text name=company value=Espa\xf1" "a <Ltd> \x80>\r\n"
                                        "<input type=text name=street value=12 Cate-des-Neiges>\r\n"
                                        "<input type=text name=pc value=H3H 1J9>\r\n"
                                        "<input type=text name=country value=Canada>\r\n"));
        struct stat st {};
        QVERIFY(::lstat(QFile::encodeName(page()).constData(), &st) == 0);
        QCOMPARE(st.st_mode & 07777, 0600u); // a link left in place would show 0777
        QCOMPARE(TestHome::read(elsewhere), QByteArray("precious"));
    }

    // Kept through several quiet spells unread; once the browser has read it and a quiet spell passes, deleted.
    // A new page does not go with the deletion already under way for the one it replaced.
    void deletedOnceReadAndQuiet()
    {
        PostPageCleaner::instance().setDelays(300ms, 1min);
        write(u"1=First"_s);
        QTest::qWait(900);
        QVERIFY(read("First")); // the desktop's opener sniffs the page...
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QVERIFY(read("First")); // ...and the browser reads it within the quiet spell
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        write(u"1=Second"_s);
        QTest::qWait(900);
        QVERIFY(read("Second"));
        QTRY_VERIFY_WITH_TIMEOUT(!exists(), 10000);
    }

    void deletedAtTheDeadlineUnread()
    {
        PostPageCleaner::instance().setDelays(1min, 300ms);
        write(u"1=Acme"_s);
        QVERIFY(exists());
        QTRY_VERIFY_WITH_TIMEOUT(!exists(), 10000);
    }

    // Deleted when the program ends; a page someone else removed first is no deletion of ours.
    void deletedWhenTheProgramEnds_data()
    {
        QTest::addColumn<bool>("goneBefore");
        QTest::newRow("page still there") << false;
        QTest::newRow("page removed by someone else first") << true;
    }
    void deletedWhenTheProgramEnds()
    {
        QFETCH(bool, goneBefore);
        write(u"1=Acme"_s);
        QVERIFY(exists());
        if (goneBefore)
            QVERIFY(QFile::remove(page()));
        QSignalSpy deleted(&PostPageCleaner::instance(), &PostPageCleaner::deleted);
        QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit", Qt::DirectConnection));
        QVERIFY(!exists());
        QCOMPARE(deleted.size(), goneBefore ? 0 : 1);
    }
};

QTEST_GUILESS_MAIN(TestPostPage)
#include "tst_postpage.moc"
