#include "common/ProgramFolder.h"
#include "request/Go.h"
#include "request/PostPage.h"
#include "request/PostPageCleaner.h"
#include "request/PostalLookup.h"

#include "RequestTestSupport.h"

#include <QFile>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;
using corvalent::test::TestHome;

namespace {

// Alternates the letter case: "www.x" -> "WwW.X".
QString alternatingCase(const QString& text)
{
    QString result = text;
    for (qsizetype i = 0; i < result.size(); ++i)
        result[i] = i % 2 ? result[i].toLower() : result[i].toUpper();
    return result;
}

} // namespace

class TestGo : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    RecordingPrompter* m_prompter = nullptr;
    RecordingLauncher* m_launcher = nullptr;
    QStringList m_dialogFor;

    std::function<void(const QString&)> countryDialog()
    {
        return [this](const QString& service) { m_dialogFor << service; };
    }

private slots:
    void initTestCase() { m_home.write(u"Countries.ini"_s, "[Countries]\r\nCanada=CA\r\n"); }
    void init()
    {
        m_prompter = test::installRecordingPrompter();
        m_launcher = test::installRecordingLauncher();
        m_dialogFor.clear();
    }
    void cleanup() { PostPageCleaner::instance().deleteNow(); }

    void getOpensTheAddress_data()
    {
        QTest::addColumn<bool>("keepOpen");
        QTest::addColumn<QString>("countryFileKey");
        QTest::addColumn<QString>("expectedCountryFile");
        QTest::newRow("window closes") << false << QString() << QString();
        QTest::newRow("window kept open") << true << QString() << QString();
        QTest::newRow("country file kept") << false << u"Countries.ini"_s << m_home.file(u"Countries.ini"_s);
    }
    void getOpensTheAddress()
    {
        QFETCH(bool, keepOpen);
        QFETCH(QString, countryFileKey);
        QFETCH(QString, expectedCountryFile);

        const QString service = test::writeService(m_home, u"Maps"_s,
            {u"URL=host/find.asp?"_s, u"CountryFile="_s + countryFileKey, u"V3=city"_s, u"V6=&country"_s});
        QString countryFilePath = u"from an earlier press"_s;
        const GoResult result = RunGo(service, test::fieldTexts({{}, {}, {}, u"Montréal"_s, {}, {}, u"Canada"_s}),
            keepOpen, countryFilePath, countryDialog());

        QCOMPARE(m_prompter->texts(), QStringList());
        QCOMPARE(m_launcher->opened().size(), 1);
        // Without a country file the settings file maps the country, and it knows no Canada here.
        const QString country = countryFileKey.isEmpty() ? u"US"_s : u"CA"_s;
        QCOMPARE(m_launcher->opened().first().target, u"http://host/find.asp?city=Montreal&country="_s + country);
        QCOMPARE(m_launcher->opened().first().workingFolder, m_home.programFolder());
        QCOMPARE(result.closeWindow, !keepOpen);
        QCOMPARE(countryFilePath, expectedCountryFile);
        QVERIFY(m_dialogFor.isEmpty());
    }

    void noUrl_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::newRow("no URL key") << QStringList{u"V1=q"_s};
        QTest::newRow("empty URL") << QStringList{u"URL="_s, u"V1=q"_s};
    }
    void noUrl()
    {
        QFETCH(QStringList, keys);
        const QString service = test::writeService(m_home, u"No address"_s, keys);
        QString countryFilePath;
        const GoResult result =
            RunGo(service, test::fieldTexts({{}, u"Acme"_s}), false, countryFilePath, countryDialog());

        QCOMPARE(m_prompter->prompts().size(), 1);
        const auto& box = m_prompter->prompts().first();
        QCOMPARE(box.text, u"No URL has been specified for this service!"_s);
        QCOMPARE(box.style, 48);
        QCOMPARE(box.caption, u"Corvalent"_s);
        QVERIFY(m_launcher->opened().isEmpty());
        QVERIFY(!result.closeWindow);
        QVERIFY(m_dialogFor.isEmpty());
    }

    void missingCountryFile()
    {
        const QString service = test::writeService(
            m_home, u"Postal codes 2~1"_s, {u"URL=host/find.asp?"_s, u"CountryFile=Gone.ini"_s, u"V6=country"_s});
        QString countryFilePath;
        const GoResult result = RunGo(
            service, test::fieldTexts({{}, {}, {}, {}, {}, {}, u"Canada"_s}), false, countryFilePath, countryDialog());

        QCOMPARE(m_prompter->prompts().size(), 1);
        const auto& box = m_prompter->prompts().first();
        QCOMPARE(box.text, u"Can't find the country file as specified in this service's settings."_s);
        QCOMPARE(box.style, 0);
        QCOMPARE(box.caption, u"Corvalent"_s);
        // The dialog is given the service's name as its file name writes it.
        QCOMPARE(m_dialogFor, QStringList{u"Postal codes 2~1"_s});
        QVERIFY(m_launcher->opened().isEmpty());
        QVERIFY(!result.closeWindow);
    }

    void route_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("post");
        QTest::newRow("marker as written") << kPostalLookupMarker + u"lang=e"_s << true;
        QTest::newRow("marker in upper case") << u"http://"_s + kPostalLookupMarker.toUpper() << true;
        QTest::newRow("marker in mixed case") << u"https://"_s + alternatingCase(kPostalLookupMarker) << true;
        QTest::newRow("same path on another host")
            << u"other.example/tools/pcl/bin/cp_search_response-e.asp?"_s << false;
        QTest::newRow("marker without its question mark") << kPostalLookupMarker.chopped(1) << false;
    }
    void route()
    {
        QFETCH(QString, url);
        QFETCH(bool, post);

        // The country file is not there: the POST route never looks for it.
        const QString service =
            test::writeService(m_home, u"Postal"_s, {u"URL="_s + url, u"CountryFile=Gone.ini"_s, u"V5=pc"_s});
        QByteArray pageWhenOpened;
        m_launcher->onOpen = [&](const QString& target) {
            QFile page(target);
            if (page.open(QIODevice::ReadOnly))
                pageWhenOpened = page.readAll();
        };
        QString countryFilePath = u"from an earlier press"_s;
        const GoResult result = RunGo(
            service, test::fieldTexts({{}, {}, {}, {}, {}, u"H2X 1Y4"_s}), false, countryFilePath, countryDialog());

        if (!post) {
            QCOMPARE(result.plan.kind, GoPlan::Kind::MissingCountryFile);
            QVERIFY(m_launcher->opened().isEmpty());
            return;
        }
        QCOMPARE(result.plan.kind, GoPlan::Kind::Post);
        QCOMPARE(m_prompter->texts(), QStringList());
        QVERIFY(m_dialogFor.isEmpty());
        QCOMPARE(m_launcher->opened().size(), 1);
        QCOMPARE(m_launcher->opened().first().target, m_home.file(u"~10936986498598137458976958.htm"_s));
        QCOMPARE(m_launcher->opened().first().workingFolder, m_home.programFolder());
        QVERIFY2(pageWhenOpened.contains("<input type=text name=pc value=H2X 1Y4>\r\n"), pageWhenOpened.constData());
        QVERIFY(!result.closeWindow);
        QCOMPARE(countryFilePath, u"from an earlier press"_s);
    }
};

QTEST_GUILESS_MAIN(TestGo)
#include "tst_go.moc"
