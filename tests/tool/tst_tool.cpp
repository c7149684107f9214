// corvalent-tool run as its users run it: a separate process with its own program folder and preferences.

#include "request/PostalLookup.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

struct Run {
    int code = -1;
    QByteArray out;
    QByteArray err;
};

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

const QRegularExpression kUsageLine(
    u"^corvalent-tool: usage: corvalent-tool |^Usage:"_s, QRegularExpression::MultilineOption);

} // namespace

class TestTool : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_tool;

    QString home() const { return m_dir.path() + u"/home"_s; }
    QString scratch(const QString& name) const { return m_dir.path() + u"/scratch/"_s + name; }

    Run run(const QStringList& args) const
    {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"CORVALENT_HOME"_s, home());
        env.insert(u"XDG_CONFIG_HOME"_s, m_dir.path() + u"/config"_s);
        env.insert(u"XDG_DATA_HOME"_s, m_dir.path() + u"/data"_s);
        env.remove(u"CORVALENT_OPENER"_s);
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(m_dir.path());
        process.start(m_tool, args);
        Run result;
        if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
            process.kill();
            process.waitForFinished();
            return result;
        }
        result.code = process.exitCode();
        result.out = process.readAllStandardOutput();
        result.err = process.readAllStandardError();
        return result;
    }

    // The shipped presets by display name, from the data the program folder is seeded with.
    static QStringList shippedServices()
    {
        QStringList names;
        const QDir presets(qEnvironmentVariable("CORVALENT_TEST_DATA") + u"/Presets"_s);
        for (const QString& file : presets.entryList({u"*.isf"_s}, QDir::Files))
            names << file.chopped(4).replace(QLatin1Char('~'), QLatin1Char('.'));
        return names;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir().mkpath(scratch(QString())));
        m_tool = qEnvironmentVariable("CORVALENT_TOOL");
        QVERIFY2(QFileInfo(m_tool).isExecutable(), "CORVALENT_TOOL names no program");
        QVERIFY(QFileInfo::exists(qEnvironmentVariable("CORVALENT_TEST_DATA") + u"/Settings.ini"_s));
    }

    // Runs first: the program folder does not exist yet and is seeded on this first use.
    void servicesListsTheShippedPresets()
    {
        QVERIFY(!QFileInfo::exists(home()));
        const Run r = run({u"services"_s});
        QCOMPARE(r.code, 0);
        QCOMPARE(r.err, QByteArray());
        QStringList listed = QString::fromUtf8(r.out).split(u'\n');
        QCOMPARE(listed.takeLast(), QString()); // every name ends its line
        std::sort(listed.begin(), listed.end());
        QStringList expected = shippedServices();
        std::sort(expected.begin(), expected.end());
        QVERIFY(!expected.isEmpty());
        QCOMPARE(listed, expected);
        QVERIFY(QFileInfo::exists(home() + u"/Settings.ini"_s));
        QVERIFY(QFileInfo::exists(home() + u"/Countries-ISO.ini"_s));
    }

    void servicesOfAFolder()
    {
        const QString folder = scratch(u"services"_s);
        writeFile(folder + u"/a~b.isf"_s, "[Settings]\r\nName=a~b\r\n");
        writeFile(folder + u"/c.d.isf"_s, "[Settings]\r\n");
        writeFile(folder + u"/X.ISF"_s, "[Settings]\r\n");
        writeFile(folder + u"/notes.txt"_s, "not a service");
        const Run r = run({u"services"_s, folder});
        QCOMPARE(r.code, 0);
        QCOMPARE(r.out, QByteArray("a.b\n"));

        const Run missing = run({u"services"_s, scratch(u"no such folder"_s)});
        QCOMPARE(missing.code, 1);
        QCOMPARE(missing.out, QByteArray());
        QVERIFY(!missing.err.isEmpty());
    }

    void requestShippedPresets_data()
    {
        QTest::addColumn<QString>("service");
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QString>("expected");

        QTest::newRow("SEC EDGAR: after the fixed pair, nothing encoded")
            << u"SEC EDGAR companies"_s << QStringList{u"1=Acme & Sons"_s}
            << u"http://www.sec.gov/cgi-bin/browse-edgar?action=getcompany&company=Acme & Sons"_s;
        QTest::newRow("SEC EDGAR: no fields") << u"SEC EDGAR companies"_s << QStringList()
                                              << u"http://www.sec.gov/cgi-bin/browse-edgar?action=getcompany"_s;
        QTest::newRow("OpenStreetMap: address rows, country through its file")
            << u"OpenStreetMap address"_s
            << QStringList{u"0=Jean Tremblay"_s, u"1=Acme"_s, u"2=1500 Rue Peel"_s, u"3=Montréal"_s, u"4=QC"_s,
                   u"5=H3A 1S9"_s, u"6=canada"_s}
            << u"http://nominatim.openstreetmap.org/ui/search.html?street=1500 Rue Peel&city=Montreal&state=QC"
               "&postalcode=H3A 1S9&country=CA"_s;
        QTest::newRow("OpenStreetMap: country with an accent")
            << u"OpenStreetMap address"_s << QStringList{u"3=Wien"_s, u"6=Österreich"_s}
            << u"http://nominatim.openstreetmap.org/ui/search.html?city=Wien&country=AT"_s;
        QTest::newRow("OpenStreetMap: country not listed")
            << u"OpenStreetMap address"_s << QStringList{u"3=Paris"_s, u"6=Atlantis"_s}
            << u"http://nominatim.openstreetmap.org/ui/search.html?city=Paris&country=US"_s;
        QTest::newRow("OpenCorporates: accents folded")
            << u"OpenCorporates"_s << QStringList{u"1=Café Müller & Söhne"_s}
            << u"http://opencorporates.com/companies?q=Cafe Muller & Sohne"_s;
        QTest::newRow("Area code lookup: two custom rows")
            << u"Area code lookup"_s << QStringList{u"7=514"_s, u"8=555"_s, u"0=Jean"_s}
            << u"http://www.localcallingguide.com/lca_prefix.php?npa=514&nxx=555"_s;
        QTest::newRow("Phone web search") << u"Phone web search"_s << QStringList{u"7=(514) 555-0199"_s}
                                          << u"http://www.google.com/search?q=(514) 555-0199"_s;
        QTest::newRow("UK Companies House: country row not sent")
            << u"UK Companies House"_s << QStringList{u"1=Tesco PLC"_s, u"6=UK"_s}
            << u"http://find-and-update.company-information.service.gov.uk/search/companies?q=Tesco PLC"_s;
    }
    void requestShippedPresets()
    {
        QFETCH(QString, service);
        QFETCH(QStringList, fields);
        QFETCH(QString, expected);
        QStringList args{u"request"_s, service};
        for (const QString& field : fields)
            args << u"--field"_s << field;
        const Run r = run(args);
        QCOMPARE(r.err, QByteArray());
        QCOMPARE(r.code, 0);
        QCOMPARE(r.out, expected.toUtf8() + '\n');
    }

    void requestFindsServicesByNameOrPath()
    {
        const QString file = home() + u"/Presets/Postal codes 2~1.isf"_s;
        writeFile(file, "[Settings]\r\nName=Postal codes 2~1\r\nURL=host/find.asp?\r\nV1=q\r\n");
        for (const QString& name : {u"Postal codes 2.1"_s, u"Postal codes 2~1"_s, file}) {
            const Run r = run({u"request"_s, name, u"--field"_s, u"1=x y"_s});
            QCOMPARE(r.code, 0);
            QCOMPARE(r.out, QByteArray("http://host/find.asp?q=x y\n"));
        }
    }

    void postalServicePrintsThePage()
    {
        const QString file = scratch(u"postal.isf"_s);
        writeFile(file,
            "[Settings]\r\nURL=HTTP://" + kPostalLookupMarker.toUpper().toUtf8()
                + "lang=e\r\nCountryFile=Gone.ini\r\nV1=company\r\nV3=&city\r\nV6=country\r\n");
        const Run r = run({u"request"_s, file, u"--field"_s, u"1=España <Ltd>"_s, u"--field"_s, u"3=Montréal"_s,
            u"--field"_s, u"6=Canada"_s});
        QCOMPARE(r.err, QByteArray());
        QCOMPARE(r.code, 0);
        const QByteArray expected = "<html><body>\r\n"
                                    "<span style=visibility:hidden>\r\n"
                                    "<form NAME=SearchQuick method=POST action='http://"
            + kPostalLookupHost.toLatin1()
            + "/tools/pcl/bin/cp_search_response-e.asp'>\r\n"
              "<input type=text name=company value=Espa\xf1"
              "a <Ltd>>\r\n"
              "<input type=text name=city value=Montreal>\r\n"
              "<input type=text name=country value=Canada>\r\n"
              "</form></span>\r\n"
              "<script>\r\n"
              "document.SearchQuick.submit();\r\n"
              "</script>\r\n"
              "</body></html>\r\n";
        QCOMPARE(r.out, expected);
        // It only prints: no page is left in the program folder.
        QVERIFY(!QFileInfo::exists(home() + u"/~10936986498598137458976958.htm"_s));
    }

    void requestFailures_data()
    {
        QTest::addColumn<QByteArray>("serviceFile"); // empty: no file at all
        QTest::addColumn<QString>("message");
        QTest::newRow("no URL") << QByteArray("[Settings]\r\nName=x\r\nV1=q\r\n")
                                << u"No URL has been specified for this service!"_s;
        QTest::newRow("country file missing")
            << QByteArray("[Settings]\r\nURL=host/x?\r\nCountryFile=Gone.ini\r\nV6=country\r\n")
            << u"Can't find the country file as specified in this service's settings."_s;
        QTest::newRow("no such service") << QByteArray() << u"No such service"_s;
    }
    void requestFailures()
    {
        QFETCH(QByteArray, serviceFile);
        QFETCH(QString, message);
        QString service = u"No such service"_s;
        if (!serviceFile.isEmpty()) {
            service = scratch(QString::fromUtf8(QTest::currentDataTag()) + u".isf"_s);
            writeFile(service, serviceFile);
        }
        const Run r = run({u"request"_s, service, u"--field"_s, u"1=Acme"_s, u"--field"_s, u"6=Canada"_s});
        QCOMPARE(r.code, 1);
        QCOMPARE(r.out, QByteArray());
        QVERIFY2(QString::fromUtf8(r.err).contains(message), r.err.constData());
    }

    void iniGet_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << QStringList() << u"Name"_s << u"Maps 2~0"_s;
        QTest::newRow("key in another case") << QStringList() << u"NAME"_s << u"Maps 2~0"_s;
        QTest::newRow("missing, no default") << QStringList() << u"Gone"_s << QString();
        QTest::newRow("missing, default") << QStringList{u"--default"_s, u"D"_s} << u"Gone"_s << u"D"_s;
        QTest::newRow("empty reads as missing") << QStringList{u"--default"_s, u"D"_s} << u"Empty"_s << u"D"_s;
        QTest::newRow("numeric fails") << QStringList{u"--type"_s, u"Numeric"_s, u"--fail"_s, u"0"_s} << u"Base"_s
                                       << u"0"_s;
        QTest::newRow("numeric fails, no fail value")
            << QStringList{u"--type"_s, u"Numeric"_s} << u"Base"_s << u"abc"_s;
        QTest::newRow("type in lower case checks nothing")
            << QStringList{u"--type"_s, u"numeric"_s, u"--fail"_s, u"0"_s} << u"Base"_s << u"abc"_s;
        QTest::newRow("numeric passes") << QStringList{u"--type"_s, u"Numeric"_s, u"--fail"_s, u"0"_s} << u"Size"_s
                                        << u"-1.5E3"_s;
        QTest::newRow("boolean word fails")
            << QStringList{u"--type"_s, u"Boolean"_s, u"--fail"_s, u"0"_s} << u"Flag"_s << u"0"_s;
        QTest::newRow("boolean number passes")
            << QStringList{u"--type"_s, u"Boolean"_s, u"--fail"_s, u"0"_s} << u"On"_s << u"-1"_s;
        QTest::newRow("default checked too") << QStringList{u"--default"_s, u"x"_s, u"--type"_s, u"Numeric"_s,
            u"--fail"_s, u"7"_s} << u"Gone"_s << u"7"_s;
    }
    void iniGet()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        const QString file = scratch(u"get.ini"_s);
        writeFile(file,
            "[Other]\r\nName=wrong section\r\n[Settings]\r\nName=Maps 2~0\r\nEmpty=\r\nBase=abc\r\n"
            "Size=-1.5E3\r\nFlag=True\r\nOn=-1\r\n");
        const Run r = run(QStringList{u"ini"_s, u"get"_s, u"Settings"_s, key} + options + QStringList{file});
        QCOMPARE(r.err, QByteArray());
        QCOMPARE(r.code, 0);
        QCOMPARE(r.out, expected.toUtf8() + '\n');
    }

    void iniSetThenGet()
    {
        // The file is created, its folder is not.
        const Run noFolder =
            run({u"ini"_s, u"set"_s, u"Settings"_s, u"Query"_s, u"x"_s, scratch(u"no folder/new.ini"_s)});
        QCOMPARE(noFolder.code, 1);
        QVERIFY(!noFolder.err.isEmpty());

        const QString file = scratch(u"new.ini"_s);
        QVERIFY(!QFileInfo::exists(file));
        QCOMPARE(run({u"ini"_s, u"set"_s, u"Settings"_s, u"Query"_s, u"a b = c&d"_s, file}).code, 0);
        QCOMPARE(run({u"ini"_s, u"get"_s, u"Settings"_s, u"Query"_s, file}).out, QByteArray("a b = c&d\n"));
        QCOMPARE(run({u"ini"_s, u"set"_s, u"Settings"_s, u"Other"_s, u"1"_s, file}).code, 0);
        QCOMPARE(run({u"ini"_s, u"set"_s, u"Settings"_s, u"query"_s, u"replaced"_s, file}).code, 0);
        const Run r = run({u"ini"_s, u"get"_s, u"Settings"_s, u"Query"_s, file});
        QCOMPARE(r.code, 0);
        QCOMPARE(r.out, QByteArray("replaced\n"));
        const Run other = run({u"ini"_s, u"get"_s, u"Settings"_s, u"Other"_s, file});
        QCOMPARE(other.out, QByteArray("1\n"));
        QCOMPARE(readFile(file).count("replaced"), 1);
    }

    // An empty FILE is the settings file of the program folder.
    void iniEmptyFileIsSettingsIni()
    {
        const QString settings = home() + u"/Settings.ini"_s;
        QVERIFY(QFileInfo::exists(settings)); // seeded by the first test
        const Run shipped = run({u"ini"_s, u"get"_s, u"Buttons"_s, u"1"_s, QString()});
        QCOMPARE(shipped.code, 0);
        QCOMPARE(shipped.out, QByteArray("OpenStreetMap address\n"));

        QCOMPARE(run({u"ini"_s, u"set"_s, u"Buttons"_s, u"4"_s, u"Phone web search"_s, QString()}).code, 0);
        const Run changed = run({u"ini"_s, u"get"_s, u"Buttons"_s, u"4"_s, QString()});
        QCOMPARE(changed.out, QByteArray("Phone web search\n"));
        const QByteArray bytes = readFile(settings);
        QVERIFY(bytes.contains("4=Phone web search"));
        QVERIFY(bytes.contains("1=OpenStreetMap address"));
        QVERIFY(!QFileInfo::exists(m_dir.path() + u"/Settings.ini"_s));
    }

    void iniSetRefusesLineBreaks()
    {
        const QString file = scratch(u"breaks.ini"_s);
        const Run r = run({u"ini"_s, u"set"_s, u"Settings"_s, u"Key"_s, u"one\ntwo"_s, file});
        QCOMPARE(r.code, 1);
        QVERIFY(!r.err.isEmpty());
        QVERIFY(!readFile(file).contains("two"));
    }

    void badCommandLines_data()
    {
        QTest::addColumn<QStringList>("args");
        const QString sec = u"SEC EDGAR companies"_s;
        QTest::newRow("nothing") << QStringList();
        QTest::newRow("unknown command") << QStringList{u"frobnicate"_s};
        QTest::newRow("ini alone") << QStringList{u"ini"_s};
        QTest::newRow("ini get without FILE") << QStringList{u"ini"_s, u"get"_s, u"Settings"_s, u"Key"_s};
        QTest::newRow("ini set without FILE") << QStringList{u"ini"_s, u"set"_s, u"Settings"_s, u"Key"_s, u"V"_s};
        QTest::newRow("ini get, option without value")
            << QStringList{u"ini"_s, u"get"_s, u"S"_s, u"K"_s, u"f.ini"_s, u"--default"_s};
        QTest::newRow("ini get, unknown option")
            << QStringList{u"ini"_s, u"get"_s, u"S"_s, u"K"_s, u"--colour"_s, u"red"_s, u"f.ini"_s};
        QTest::newRow("request without service") << QStringList{u"request"_s};
        QTest::newRow("request with two services") << QStringList{u"request"_s, sec, sec};
        QTest::newRow("request, unknown option") << QStringList{u"request"_s, sec, u"--colour"_s, u"red"_s};
        QTest::newRow("field row 12") << QStringList{u"request"_s, sec, u"--field"_s, u"12=x"_s};
        QTest::newRow("field row -1") << QStringList{u"request"_s, sec, u"--field"_s, u"-1=x"_s};
        QTest::newRow("field without row") << QStringList{u"request"_s, sec, u"--field"_s, u"=x"_s};
        QTest::newRow("field without =") << QStringList{u"request"_s, sec, u"--field"_s, u"3"_s};
        QTest::newRow("services with two folders") << QStringList{u"services"_s, u"a"_s, u"b"_s};
    }
    void badCommandLines()
    {
        QFETCH(QStringList, args);
        const Run r = run(args);
        QCOMPARE(r.code, 2);
        QCOMPARE(r.out, QByteArray());
        QVERIFY2(kUsageLine.match(QString::fromUtf8(r.err)).hasMatch(), r.err.constData());
    }

    void helpPrintsUsage()
    {
        const Run r = run({u"--help"_s});
        QCOMPARE(r.code, 0);
        QVERIFY(r.out.startsWith("Usage:\n"));
        QVERIFY(r.out.contains("corvalent-tool request SERVICE"));
    }
};

QTEST_GUILESS_MAIN(TestTool)
#include "tst_tool.moc"
