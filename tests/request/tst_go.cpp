#include "request/Go.h"
#include "request/PostPageCleaner.h"
#include "request/RequestBuilder.h"

#include "support/RequestSupport.h"

using namespace corvalent;
using namespace Qt::StringLiterals;

const QString kEarlier = u"from an earlier press"_s;
const QString kMissing = u"Can't find the country file as specified in this service's settings."_s;

class TestGo : public QObject {
    Q_OBJECT

    test::TestHome m_home;

private slots:
    void initTestCase()
    {
        m_home.write(u"Countries.ini"_s, "[Settings]\r\nAtlantis=XX\r\n[Countries]\r\nCanada=CA\r\n");
        m_home.write(u"Settings.ini"_s, "[Countries]\r\nCanada=CA-SETTINGS\r\n");
    }
    void cleanup() { PostPageCleaner::instance().deleteNow(); }

    void build_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QString>("expected");
        // The country row is mapped; the others lose their accents unless the service sends UTF-8.
        QTest::newRow("& joins, no ? is added") << u"URL=h/s|V1=b"_s << u"1=2"_s << u"http://h/s&b=2"_s;
        QTest::newRow("HTTP kept") << u"URL=HTTP://H/s?|V1=b"_s << u"1=2"_s << u"HTTP://H/s?b=2"_s;
        QTest::newRow("https doubled") << u"URL=https://h/s?|V1=b"_s << u"1=2"_s << u"http://https://h/s?b=2"_s;
        QTest::newRow("empty fields and unnamed rows add nothing")
            << u"URL=h/s?|V0=a|V1=b|V2=c|V3=d|V9=j"_s << u"1=x|3= |4=y|9=z"_s << u"http://h/s?b=x&d= &j=z"_s;
        QTest::newRow("folded, &var, not percent-encoded")
            << u"URL=host/find.asp?|CountryFile=Countries.ini|V0=name|V3=&city|V6=country"_s
            << u"0=Élise Côté|3=A & B = #1 50% ?x|6=canada"_s
            << u"http://host/find.asp?name=elise Cate&city=A & B = #1 50% ?x&country=CA"_s;
        // RFC 3986 unreserved characters kept, the fixed part as written.
        QTest::newRow("utf-8: escaped, not folded, country mapped")
            << u"URL=h/s?a=b c|Encoding= UTF-8 |CountryFile=Countries.ini|V0=n|V1=q|V2=x|V6=c"_s
            << u"0=Procter & Gamble|1=A+B = #1 50% ?/x|2=Côté ~._-ô 😀|6=canada"_s
            << u"http://h/s?a=b c&n=Procter%20%26%20Gamble&q=A%2BB%20%3D%20%231%2050%25%20%3F%2Fx"
               u"&x=C%C3%B4t%C3%A9%20~._-%C3%B4%20%F0%9F%98%80&c=CA"_s;
        // Only the country file's Countries section maps, else DefaultCountry, else US; without a country file,
        // Settings.ini maps.
        const QString mapped = u"URL=h/s?|V6=c|CountryFile=Countries.ini"_s;
        QTest::newRow("country: Countries section only")
            << mapped + u"|DefaultCountry=FR"_s << u"6=Atlantis"_s << u"http://h/s?c=FR"_s;
        QTest::newRow("country: US by default") << mapped << u"6=Atlantis"_s << u"http://h/s?c=US"_s;
        QTest::newRow("country: Settings.ini") << u"URL=h/s?|V6=c"_s << u"6=CANADA"_s << u"http://h/s?c=CA-SETTINGS"_s;
    }
    void build()
    {
        QFETCH(QString, keys);
        QFETCH(QString, fields);
        QFETCH(QString, expected);
        const QString service = test::writeService(m_home, keys);
        QCOMPARE(BuildRequest(service, test::fieldTexts(fields), ResolveCountryFile(service).fullPath), expected);
    }

    void go_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<bool>("keepOpen");
        QTest::addColumn<QString>("opened");  // what the browser is given
        QTest::addColumn<QString>("message"); // shown with `style`
        QTest::addColumn<int>("style");
        QTest::addColumn<QString>("kept"); // the country file the main window keeps
        QTest::addColumn<bool>("close");
        const QString get = u"URL=host/find.asp?|CountryFile=Countries.ini|V3=city|V6=&country"_s;
        const QString address = u"http://host/find.asp?city=Montreal&country=CA"_s;
        const QString countries = m_home.file(u"Countries.ini"_s);
        const QString page = m_home.file(u"~10936986498598137458976958.htm"_s);
        // The country file is not there: the POST route never looks for it.
        const QString gone = u"|CountryFile=Gone.ini|V3=city"_s;
        QTest::newRow("GET closes the window") << get << false << address << QString() << 0 << countries << true;
        QTest::newRow("GET, kept open") << get << true << address << QString() << 0 << countries << false;
        QTest::newRow("no URL") << u"URL=|V1=q"_s << false << QString()
                                << u"No URL has been specified for this service!"_s << 48 << kEarlier << false;
        QTest::newRow("missing country file") << u"URL=h/s?"_s + gone << false << QString() << kMissing << 0
                                              << u"Gone.ini"_s << false;
        QTest::newRow("postal path, other host") << u"URL=h/tools/pcl/bin/cp_search_response-e.asp?"_s + gone
                                                 << false << QString() << kMissing << 0 << u"Gone.ini"_s << false;
        QTest::newRow("POST, marker in upper case")
            << test::kPostalUrl.toUpper() + gone << false << page << QString() << 0 << kEarlier << false;
    }
    void go()
    {
        QFETCH(QString, keys);
        QFETCH(bool, keepOpen);
        QFETCH(QString, opened);
        QFETCH(QString, message);
        auto* prompter = test::install<RecordingPrompter, Prompter>();
        auto* launcher = test::install<RecordingLauncher, Launcher>();
        QByteArray atOpen;
        launcher->onOpen = [&](const QString& target) { atOpen = test::TestHome::read(target); };
        QStringList dialogFor;
        QString countryFile = kEarlier;

        const GoResult result = RunGo(test::writeService(m_home, keys, u"Postal 2~1"_s),
                                      test::fieldTexts(u"3=Montréal|6=Canada"_s), keepOpen, countryFile,
                                      [&](const QString& service) { dialogFor << service; });

        QTEST(result.closeWindow, "close");
        QTEST(countryFile, "kept");
        QCOMPARE(launcher->opened().size(), opened.isEmpty() ? 0 : 1);
        for (const RecordingLauncher::Opened& o : launcher->opened()) {
            QCOMPARE(o.target, opened);
            QCOMPARE(o.workingFolder, m_home.programFolder());
        }
        QCOMPARE(atOpen.contains("<input type=text name=city value=Montreal>\r\n"), opened.endsWith(u".htm"_s));
        QCOMPARE(prompter->texts(), message.isEmpty() ? QStringList() : QStringList{message});
        for (const RecordingPrompter::Prompt& p : prompter->prompts()) {
            QTEST(p.style, "style");
            QCOMPARE(p.caption, u"Corvalent"_s);
        }
        // The dialog gets the service's name as its file name writes it.
        QCOMPARE(dialogFor, message == kMissing ? QStringList{u"Postal 2~1"_s} : QStringList());
    }
};

QTEST_GUILESS_MAIN(TestGo)
#include "tst_go.moc"
