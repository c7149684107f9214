// corvalent-tool run as its users run it: a separate process, here on a private program folder and preferences.

#include "support/RequestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestTool : public QObject {
    Q_OBJECT

    test::TestHome m_home; // the tool inherits its environment

    struct Run {
        int code = -1;
        QByteArray out, err;
    };
    static Run run(const QStringList& args)
    {
        QProcess process; // kills the tool if it has not finished
        process.start(qEnvironmentVariable("CORVALENT_TOOL"), args);
        const bool ended = process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit;
        return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
    }

private slots:
    // Runs first: the tool seeds the emptied program folder from the shipped data.
    void servicesListsTheShippedPresets()
    {
        QVERIFY(QFile::remove(m_home.file(u".test"_s)));
        auto expected = QDir(qEnvironmentVariable("CORVALENT_TEST_DATA") + u"/Presets"_s).entryList({u"*.isf"_s});
        QVERIFY(!expected.isEmpty());
        for (QString& name : expected)
            name = name.chopped(4).replace(u'~', u'.');
        const Run r = run({u"services"_s});
        QCOMPARE(r.code, 0);
        QStringList listed = QString::fromUtf8(r.out).split(u'\n');
        QCOMPARE(listed.takeLast(), QString()); // every name ends its line
        listed.sort();
        QCOMPARE(listed, expected);
    }

    void commands_data()
    {
        QTest::addColumn<QString>("args"); // split at "|"; commands chained with "&&" as in a shell
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("out");
        QTest::addColumn<QString>("err"); // a pattern
        const QString none = u"\\A\\z"_s;
        const QString usage = u"^corvalent-tool: usage: corvalent-tool |^Usage:"_s;
        // Field rows are given as N=TEXT items after the service.
        const auto request = [&](const char* tag, const QString& items, const QByteArray& out) {
            QTest::newRow(tag) << u"request|"_s + QString(items).replace(u"|"_s, u"|--field|"_s) << 0 << out << none;
        };
        // The shipped services send UTF-8, percent-encoded.
        request("SEC EDGAR", u"SEC EDGAR companies|1=Acme & Sons"_s,
                "http://www.sec.gov/cgi-bin/browse-edgar?action=getcompany&company=Acme%20%26%20Sons\n");
        request("OpenStreetMap",
                u"OpenStreetMap address|0=Jean|1=Acme|2=1500 Rue Peel|3=Montréal|4=QC|5=H3A 1S9|6=canada"_s,
                "http://nominatim.openstreetmap.org/ui/search.html?street=1500%20Rue%20Peel&city=Montr%C3%A9al"
                "&state=QC&postalcode=H3A%201S9&country=CA\n");
        request("OpenCorporates", u"OpenCorporates|1=Café Müller"_s,
                "http://opencorporates.com/companies?q=Caf%C3%A9%20M%C3%BCller\n");
        request("UK Companies House", u"UK Companies House|1=Tesco PLC|6=UK"_s,
                "http://find-and-update.company-information.service.gov.uk/search/companies?q=Tesco%20PLC\n");
        request("Area code lookup", u"Area code lookup|0=Jean|7=514|8=555"_s,
                "http://www.localcallingguide.com/lca_prefix.php?npa=514&nxx=555\n");
        request("Phone web search", u"Phone web search|7=(514) 555-0199"_s,
                "http://www.google.com/search?q=%28514%29%20555-0199\n");
        // By its display name; its country file is not there, and the POST page never needs it.
        request("postal page", u"Postal 2.1|1=España|3=Montréal|6=Canada"_s,
                test::postPage("<input type=text name=company value=Espa\xf1" "a>\r\n"
                               "<input type=text name=city value=Montreal>\r\n"
                               "<input type=text name=country value=Canada>\r\n"));
        request("postal page, UTF-8", u"Postal UTF-8|1=\"Ça\" & <Ltée>|3=Montréal"_s,
                test::postPage("<input type=text name=\"company\" value=\"&quot;\xC3\x87" "a&quot; &amp; "
                               "&lt;Lt\xC3\xA9" "e&gt;\">\r\n<input type=text name=\"city\" value=\"Montr\xC3\xA9" "al\">\r\n")
                    .replace("<html><body>", "<html><head><meta charset=\"utf-8\"></head><body>"));

        const QByteArray nothing;
        QTest::newRow("no URL") << u"request|No URL"_s << 1 << nothing << u"No URL has been specified"_s;
        QTest::newRow("missing country file") << u"request|Country gone"_s << 1 << nothing
                                              << u"Can't find the country file"_s;
        QTest::newRow("missing service") << u"request|Nowhere"_s << 1 << nothing << u"no service file Nowhere"_s;

        QTest::newRow("ini --default") << u"ini|get|S|Gone|--default|D|%ini"_s << 0 << QByteArray("D\n") << none;
        QTest::newRow("ini set, --type fails") << u"ini|set|S|N|abc|%ini|&&|ini|get|S|N|--type|Numeric|--fail|0|%ini"_s
                                               << 0 << QByteArray("0\n") << none;
        // A trailing "|" gives FILE "", the program folder's Settings.ini.
        QTest::newRow("ini get \"\"") << u"ini|get|Buttons|1|"_s << 0 << QByteArray("OpenStreetMap address\n") << none;

        // No arguments, an unknown command, ini get without FILE, an unknown option, field row 10, two folders.
        for (const char* wrong : {"", "frobnicate", "ini|get|S|K", "request|No URL|--colour|red",
                                  "request|No URL|--field|10=x", "services|a|b"})
            QTest::newRow(wrong) << QString::fromLatin1(wrong) << 2 << nothing << usage;
    }
    void commands()
    {
        QFETCH(QString, args);
        QFETCH(int, code);
        QFETCH(QByteArray, out);
        QFETCH(QString, err);
        const QString gone = u"|CountryFile=Gone.ini|V1=company|V3=&city|V6=country"_s;
        test::writeService(m_home, test::kPostalUrl.toUpper() + gone, u"Postal 2~1"_s);
        test::writeService(m_home, u"URL=h/x?"_s + gone, u"Country gone"_s);
        test::writeService(m_home, u"V1=q"_s, u"No URL"_s);
        test::writeService(m_home, test::kPostalUrl + u"|Encoding=utf-8|V1=company|V3=&city"_s, u"Postal UTF-8"_s);

        QStringList commands = QString(args).replace(u"%ini"_s, m_home.file(u"scratch.ini"_s)).split(u"|&&|"_s);
        const auto argv = [](const QString& command) { return command.isEmpty() ? QStringList() : command.split('|'); };
        const QString last = commands.takeLast();
        for (const QString& command : commands)
            QCOMPARE(run(argv(command)).code, 0);
        const Run r = run(argv(last));
        QCOMPARE(r.code, code);
        QCOMPARE(r.out, out);
        const QRegularExpression pattern(err, QRegularExpression::MultilineOption);
        QVERIFY2(pattern.match(QString::fromUtf8(r.err)).hasMatch(), r.err.constData());
        QVERIFY(!QFileInfo::exists(m_home.file(u"~10936986498598137458976958.htm"_s))); // it only prints
    }
};

QTEST_GUILESS_MAIN(TestTool)
#include "tst_tool.moc"
