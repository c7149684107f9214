// corvalent-tool download, run as an administrator runs it, against real servers on 127.0.0.1.

#include "TestServers.h"
#include "download/ServiceServer.h"
#include "prefs/Preferences.h"

#include <QDir>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

const QByteArray kOld = "[Settings]\r\nName=old\r\n";

class TestDownloadTool : public QObject {
    Q_OBJECT

    test::TestHome m_home; // the tool inherits its environment
    test::ServedFolders m_served{m_home};
    test::TestServer m_ftp{u"ftp"_s, m_served.full};
    test::TestServer m_ftpEmpty{u"ftp"_s, m_served.empty};
    test::TestServer m_hostile{u"hostile"_s};

    QString presets() const { return m_home.file(u"Presets"_s); }

private slots:
    // Without --server the tool asks the server of the preferences.
    void initTestCase() { SaveSetting(kServicesServerKey, m_ftp.url("ftp")); }

    void commands_data()
    {
        QTest::addColumn<QString>("args"); // split at "|"
        QTest::addColumn<QStringList>("before"); // installed files
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("out"); // lines in any order
        QTest::addColumn<QString>("err"); // a pattern
        // Installed files afterwards: ":old" when untouched, otherwise byte for byte the served file.
        QTest::addColumn<QStringList>("after");
        const QString none = u"\\A\\z"_s;
        const QStringList nothing;
        const QStringList postalOld{u"Postal 2~1.isf:old"_s};
        QTest::newRow("list, empty folder") << u"list|--server|%empty"_s << nothing << 0 << QString()
                                            << u"This directory is empty!"_s << nothing;
        QTest::newRow("list, hostile names")
            << u"list|--server|%hostile"_s << nothing << 0 << u"big\nfine\n"_s
            << u"7 name\\(s\\) on the server ignored: not plain file names"_s << nothing;
        QTest::newRow("get by display and file name")
            << u"get|Postal 2.1|Yellow pages.isf"_s << nothing << 0 << u"installed Postal 2.1\ninstalled Yellow pages\n"_s
            << none << QStringList{u"Postal 2~1.isf"_s, u"Yellow pages.isf"_s};
        QTest::newRow("get leaves an installed one") << u"get|Postal 2.1"_s << postalOld << 0 << QString()
                                                     << u"Postal 2.1 is installed already"_s << postalOld;
        QTest::newRow("get --replace") << u"get|--replace|Postal 2.1"_s << postalOld << 0
                                       << u"installed Postal 2.1\n"_s << none << QStringList{u"Postal 2~1.isf"_s};
        QTest::newRow("get, hostile")
            << u"get|../x|a/b.isf|big|fine|--server|%hostile"_s << nothing << 1 << u"installed fine\n"_s
            << u"\"../x\" is not a service name\n.*\"a/b.isf\" is not a service name\n.*larger than 1048576 bytes"_s
            << QStringList{u"fine.isf"_s};
        QTest::newRow("get, not on the server") << u"get|Nowhere"_s << nothing << 1 << QString()
                                                << u"FtpGetFile Err: .*550"_s << nothing;
        QTest::newRow("delete") << u"delete|Postal 2.1|Nowhere|x/Yellow pages.isf"_s
                                << QStringList{u"Postal 2~1.isf:old"_s, u"Yellow pages.isf:old"_s} << 1
                                << u"deleted Postal 2.1\n"_s
                                << u"could not delete Nowhere.*\"x/Yellow pages.isf\" is not a service name"_s
                                << QStringList{u"Yellow pages.isf:old"_s};

        const QString usage = u"(?m)^corvalent-tool: usage: corvalent-tool download"_s;
        for (const char* wrong : {"", "list|extra", "get", "delete|x|--server|y", "list|--replace", "fetch|x"})
            QTest::newRow(wrong) << QString::fromLatin1(wrong) << nothing << 2 << QString() << usage << nothing;
    }
    void commands()
    {
        QFETCH(QString, args);
        QFETCH(QStringList, before);
        QDir(presets()).removeRecursively();
        for (const QString& file : before)
            m_home.write(u"Presets/"_s + file.section(u':', 0, 0), kOld);

        args.replace(u"%empty"_s, m_ftpEmpty.url("ftp")).replace(u"%hostile"_s, m_hostile.url("http"));
        QProcess tool;
        tool.start(qEnvironmentVariable("CORVALENT_TOOL"),
                   QStringList{u"download"_s} + (args.isEmpty() ? QStringList() : args.split(u'|')));
        QVERIFY(tool.waitForFinished(60000));
        QTEST(tool.exitCode(), "code");
        QStringList printed = QString::fromUtf8(tool.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
        QFETCH(QString, out);
        QStringList expectedOut = out.split(u'\n', Qt::SkipEmptyParts);
        printed.sort();
        expectedOut.sort();
        QCOMPARE(printed, expectedOut);
        QFETCH(QString, err);
        const QString said = QString::fromUtf8(tool.readAllStandardError());
        QVERIFY2(QRegularExpression(err, QRegularExpression::DotMatchesEverythingOption).match(said).hasMatch(),
                 qPrintable(said));

        QStringList after;
        for (const QString& file : QDir(presets()).entryList(QDir::Files | QDir::Hidden)) {
            const QByteArray bytes = test::TestHome::read(presets() + u'/' + file);
            const QString served = m_served.full + u'/' + file;
            if (bytes != kOld && QFile::exists(served))
                QCOMPARE(bytes, test::TestHome::read(served));
            after << file + (bytes == kOld ? u":old"_s : QString());
        }
        QTEST(after, "after");
        // Nothing was written beside the Presets folder.
        QCOMPARE(QDir(m_home.programFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 (after.isEmpty() && before.isEmpty() ? QStringList{u".test"_s}
                                                       : QStringList{u".test"_s, u"Presets"_s}));
    }
};

QTEST_GUILESS_MAIN(TestDownloadTool)
#include "tst_downloadtool.moc"
