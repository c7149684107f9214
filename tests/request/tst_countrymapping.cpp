#include "request/CountryMapping.h"
#include "services/IniLib.h"

#include "RequestTestSupport.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;
using corvalent::test::TestHome;

class TestCountryMapping : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    RecordingPrompter* m_prompter = nullptr;

private slots:
    void init()
    {
        m_prompter = test::installRecordingPrompter();
        SetIniSettingsFile(QString());
    }
    void cleanup()
    {
        QCOMPARE(m_prompter->texts(), QStringList());
        SetIniSettingsFile(QString());
    }

    void countryFile_data()
    {
        QTest::addColumn<QByteArray>("countryFile"); // empty: the service names a file that is not there
        QTest::addColumn<QStringList>("serviceKeys");
        QTest::addColumn<QString>("country");
        QTest::addColumn<QString>("expected");

        const QByteArray file = "[Countries]\r\nCanada=CA\r\nUnited States=US\r\nÖsterreich=AT\r\nNowhere=\r\n";
        const QStringList fr{u"DefaultCountry=FR"_s};
        QTest::newRow("key in another letter case") << file << fr << u"canada"_s << u"CA"_s;
        QTest::newRow("key with a blank") << file << fr << u"United States"_s << u"US"_s;
        QTest::newRow("key with an accent") << file << fr << u"Österreich"_s << u"AT"_s;
        QTest::newRow("not listed: default country") << file << fr << u"Atlantis"_s << u"FR"_s;
        QTest::newRow("whole text only") << file << fr << u"Can"_s << u"FR"_s;
        QTest::newRow("empty code counts as not listed") << file << fr << u"Nowhere"_s << u"FR"_s;
        QTest::newRow("no default country key") << file << QStringList() << u"Atlantis"_s << u"US"_s;
        QTest::newRow("empty default country") << file << QStringList{u"DefaultCountry="_s} << u"Atlantis"_s << u"US"_s;
        QTest::newRow("another section does not count")
            << QByteArray("[Settings]\r\nCanada=XX\r\n") << fr << u"Canada"_s << u"FR"_s;
        QTest::newRow("file not there") << QByteArray() << QStringList{u"DefaultCountry=DE"_s} << u"Canada"_s
                                        << u"DE"_s;
    }
    void countryFile()
    {
        QFETCH(QByteArray, countryFile);
        QFETCH(QStringList, serviceKeys);
        QFETCH(QString, country);
        QFETCH(QString, expected);

        const QString name = QString::fromUtf8(QTest::currentDataTag());
        const QString path =
            countryFile.isEmpty() ? m_home.file(name + u".ini"_s) : m_home.write(name + u".ini"_s, countryFile);
        const QString service = test::writeService(m_home, name, serviceKeys);
        QCOMPARE(Get_Country(country, path, service), expected);
    }

    // With no country file the "Countries" section of the settings file answers: Settings.ini of the program
    // folder, or the settings file named at start-up.
    void noCountryFileUsesSettingsFile()
    {
        const QString service = test::writeService(m_home, u"no country file"_s, {u"DefaultCountry=FR"_s});
        m_home.write(u"Settings.ini"_s, "[Buttons]\r\n1=Maps\r\n\r\n[Countries]\r\nCanada=CA\r\nUSA=US\r\n");
        QCOMPARE(Get_Country(u"CANADA"_s, QString(), service), u"CA"_s);
        QCOMPARE(Get_Country(u"Atlantis"_s, QString(), service), u"FR"_s);

        const QString elsewhere = m_home.write(u"elsewhere/Other settings.ini"_s, "[Countries]\r\nCanada=KAN\r\n");
        SetIniSettingsFile(elsewhere);
        QCOMPARE(Get_Country(u"Canada"_s, QString(), service), u"KAN"_s);
        QCOMPARE(Get_Country(u"USA"_s, QString(), service), u"FR"_s);
    }
};

QTEST_GUILESS_MAIN(TestCountryMapping)
#include "tst_countrymapping.moc"
