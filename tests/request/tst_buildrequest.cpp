#include "request/RequestBuilder.h"

#include "RequestTestSupport.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;
using corvalent::test::TestHome;

class TestBuildRequest : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    RecordingPrompter* m_prompter = nullptr;

private slots:
    void initTestCase()
    {
        m_home.write(u"Countries.ini"_s, "[Countries]\r\nCanada=CA\r\nMéxico=MX\r\n");
        // Services without a country file map the country through the settings file.
        m_home.write(u"Settings.ini"_s, "[Countries]\r\nCanada=CA-SETTINGS\r\n");
    }
    void init() { m_prompter = test::installRecordingPrompter(); }

    void build_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QString>("expected");

        const QString s = u"URL=host/s.asp?"_s;
        QTest::newRow("after a fixed pair") << QStringList{u"URL=host/s.asp?a=1"_s, u"V1=b"_s}
                                            << QStringList{{}, u"2"_s} << u"http://host/s.asp?a=1&b=2"_s;
        QTest::newRow("no question mark is added")
            << QStringList{u"URL=host/s.asp"_s, u"V1=b"_s} << QStringList{{}, u"2"_s} << u"http://host/s.asp&b=2"_s;
        QTest::newRow("upper-case scheme kept") << QStringList{u"URL=HTTP://Host/s.asp?"_s, u"V1=b"_s}
                                                << QStringList{{}, u"2"_s} << u"HTTP://Host/s.asp?b=2"_s;
        QTest::newRow("https gets http in front")
            << QStringList{u"URL=https://x"_s} << QStringList{u"a"_s} << u"http://https://x"_s;
        QTest::newRow("empty field adds nothing") << QStringList{s, u"V0=a"_s, u"V1=b"_s, u"V2=c"_s}
                                                  << QStringList{u"1"_s, {}, u"3"_s} << u"http://host/s.asp?a=1&c=3"_s;
        QTest::newRow("first pair after an empty field")
            << QStringList{s, u"V0=a"_s, u"V1=b"_s} << QStringList{{}, u"2"_s} << u"http://host/s.asp?b=2"_s;
        QTest::newRow("row without a variable is not sent")
            << QStringList{s, u"V1=b"_s} << QStringList{u"1"_s, u"2"_s} << u"http://host/s.asp?b=2"_s;
        QTest::newRow("leading ampersand dropped")
            << QStringList{s, u"V3=&city"_s} << QStringList{{}, {}, {}, u"Laval"_s}
            << u"http://host/s.asp?city=Laval"_s;
        QTest::newRow("empty value still sends the name")
            << QStringList{s, u"V3=&city"_s} << QStringList{{}, {}, {}, u" "_s} << u"http://host/s.asp?city= "_s;
        QTest::newRow("only one ampersand dropped")
            << QStringList{s, u"V0=&&x"_s} << QStringList{u"1"_s} << u"http://host/s.asp?&x=1"_s;
        QTest::newRow("example with city and postal code")
            << QStringList{u"URL=host/find.asp?"_s, u"V3=city"_s, u"V5=&pc"_s}
            << QStringList{{}, {}, {}, u"Montréal"_s, {}, u"H2X 1Y4"_s}
            << u"http://host/find.asp?city=Montreal&pc=H2X 1Y4"_s;
        QTest::newRow("nothing is percent-encoded")
            << QStringList{s, u"V1=q"_s} << QStringList{{}, u"A & B = #1 50% ?x"_s}
            << u"http://host/s.asp?q=A & B = #1 50% ?x"_s;

        const QStringList countryKeys{
            s, u"CountryFile=Countries.ini"_s, u"DefaultCountry=FR"_s, u"V0=name"_s, u"V6=country"_s, u"V7=note"_s};
        QTest::newRow("country mapped, other rows folded and not mapped")
            << countryKeys << QStringList{u"Élise Côté"_s, {}, {}, {}, {}, {}, u"canada"_s, u"Canada"_s}
            << u"http://host/s.asp?name=elise Cate&country=CA&note=Canada"_s;
        QTest::newRow("country looked up as typed, accent and all")
            << countryKeys << QStringList{{}, {}, {}, {}, {}, {}, u"México"_s} << u"http://host/s.asp?country=MX"_s;
        QTest::newRow("country not listed sends the default")
            << countryKeys << QStringList{{}, {}, {}, {}, {}, {}, u"Atlantis"_s} << u"http://host/s.asp?country=FR"_s;
        QTest::newRow("empty country sends nothing, not the default")
            << countryKeys << QStringList{u"x"_s} << u"http://host/s.asp?name=x"_s;
        QTest::newRow("no country file: the settings file maps")
            << QStringList{s, u"V6=country"_s} << QStringList{{}, {}, {}, {}, {}, {}, u"Canada"_s}
            << u"http://host/s.asp?country=CA-SETTINGS"_s;

        QStringList allKeys{s, u"CountryFile=Countries.ini"_s};
        QStringList allFields;
        for (int row = 0; row < kFieldRows; ++row) {
            allKeys << u"V%1=r%1"_s.arg(row);
            allFields << (row == kCountryRow ? u"Canada"_s : u"f%1"_s.arg(row));
        }
        QTest::newRow("every row, in row order")
            << allKeys << allFields
            << u"http://host/s.asp?r0=f0&r1=f1&r2=f2&r3=f3&r4=f4&r5=f5&r6=CA&r7=f7&r8=f8&r9=f9"_s;
        QTest::newRow("only the address") << QStringList{u"URL=host/p"_s} << allFields << u"http://host/p"_s;
    }
    void build()
    {
        QFETCH(QStringList, keys);
        QFETCH(QStringList, fields);
        QFETCH(QString, expected);

        const QString service = test::writeService(m_home, QString::fromUtf8(QTest::currentDataTag()), keys);
        const CountryFileResolution country = ResolveCountryFile(service);
        QVERIFY(country.exists);
        QCOMPARE(BuildRequest(service, test::fieldTexts(fields), country.fullPath), expected);
        QCOMPARE(m_prompter->texts(), QStringList());
    }

    void countryFileResolution()
    {
        const QString named = test::writeService(m_home, u"named"_s, {u"CountryFile=Countries.ini"_s});
        const CountryFileResolution found = ResolveCountryFile(named);
        QCOMPARE(found.value, u"Countries.ini"_s);
        QCOMPARE(found.fullPath, m_home.file(u"Countries.ini"_s));
        QVERIFY(found.exists);

        const QString missing = test::writeService(m_home, u"missing"_s, {u"CountryFile=Gone.ini"_s});
        const CountryFileResolution gone = ResolveCountryFile(missing);
        QCOMPARE(gone.fullPath, m_home.file(u"Gone.ini"_s));
        QVERIFY(!gone.exists);

        const QString none = test::writeService(m_home, u"none"_s, {u"CountryFile="_s});
        const CountryFileResolution empty = ResolveCountryFile(none);
        QCOMPARE(empty.value, QString());
        QCOMPARE(empty.fullPath, QString());
        QVERIFY(empty.exists);
    }
};

QTEST_GUILESS_MAIN(TestBuildRequest)
#include "tst_buildrequest.moc"
