#include "services/IniLib.h"

#include "support/TestHome.h"

#include <QDir>
#include <QTest>

using namespace corvalent;
using corvalent::test::TestHome;

namespace {

const QString kDefault = QStringLiteral("<default>");

// 300 characters that never repeat within 26, so a cut at the wrong place shows.
QString longValue(int length)
{
    QString text;
    for (int i = 0; i < length; ++i)
        text += QChar(u'a' + i % 26);
    return text;
}

} // namespace

class TestIniRead : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    int m_files = 0;

    QString newFile(const QByteArray& bytes)
    {
        return m_home.write(QStringLiteral("read/%1.ini").arg(++m_files), bytes);
    }

private slots:
    void init() { SetIniSettingsFile(QString()); }

    void read_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");

        const QString S = QStringLiteral("Settings");

        QTest::newRow("LF") << QByteArray("[Settings]\nURL=http://a\nV0=x\n") << S << "URL" << "http://a";
        QTest::newRow("CRLF, no carriage return kept") << QByteArray("[Settings]\r\nURL=http://a\r\nV0=x\r\n") << S << "URL"
                                                       << "http://a";
        QTest::newRow("CRLF, last key") << QByteArray("[Settings]\r\nURL=http://a\r\nV0=x\r\n") << S << "V0" << "x";
        QTest::newRow("no final line break") << QByteArray("[Settings]\r\nURL=u") << S << "URL" << "u";
        QTest::newRow("UTF-8 BOM before the first header")
            << QByteArray("\xEF\xBB\xBF[Settings]\r\nCity=Montr\xC3\xA9" "al\r\n") << S << "City" << "Montréal";
        QTest::newRow("UTF-8 without BOM") << QByteArray("[Settings]\nCity=Montr\xC3\xA9" "al\n") << S << "City"
                                           << "Montréal";
        QTest::newRow("Windows-1252") << QByteArray("[Settings]\r\nCity=Montr\xE9" "al\r\n") << S << "City" << "Montréal";
        QTest::newRow("UTF-8 BOM, then Windows-1252 bytes")
            << QByteArray("\xEF\xBB\xBF[Settings]\r\nCity=Montr\xE9" "al\r\n") << S << "City" << "Montréal";
        QTest::newRow("Windows-1252 bytes 0x80-0x9F")
            << QByteArray("[Settings]\r\nNote=\x80 \x93q\x94 \x9C\r\n") << S << "Note" << "€ “q” œ";
        QTest::newRow("Windows-1252 in the section name")
            << QByteArray("[Qu\xE9" "bec]\r\nk=v\r\n") << "Québec" << "k" << "v";

        QTest::newRow("duplicate key: first wins") << QByteArray("[A]\nk=1\nk=2\n") << "A" << "k" << "1";
        QTest::newRow("duplicate section: first wins") << QByteArray("[A]\nk=1\n[B]\nk=2\n[A]\nk=3\n") << "A" << "k"
                                                        << "1";
        QTest::newRow("duplicate section: second is never consulted")
            << QByteArray("[A]\nk=1\n[B]\nk=2\n[A]\nj=4\n") << "A" << "j" << kDefault;
        QTest::newRow("section after a duplicate still read") << QByteArray("[A]\nk=1\n[A]\nk=3\n[B]\nk=2\n") << "B"
                                                               << "k" << "2";
        QTest::newRow("same key in another section") << QByteArray("[Other]\nURL=wrong\n[Settings]\nURL=right\n") << S
                                                     << "URL" << "right";

        QTest::newRow("section name case") << QByteArray("[SETTINGS]\nURL=u\n") << S << "URL" << "u";
        QTest::newRow("key name case") << QByteArray("[Settings]\nurl=u\n") << "settings" << "Url" << "u";
        QTest::newRow("value case kept") << QByteArray("[Settings]\nURL=MiXeD\n") << S << "URL" << "MiXeD";

        QTest::newRow("blanks around key and value") << QByteArray("[Settings]\n  URL  =  a b  \n") << S << "URL"
                                                     << "a b";
        QTest::newRow("tabs around key and value") << QByteArray("[Settings]\n\tURL\t=\ta b\t\n") << S << "URL" << "a b";
        QTest::newRow("blanks around the header") << QByteArray("  [Settings]  \r\nURL=u\r\n") << S << "URL" << "u";
        QTest::newRow("blanks in the asked key name") << QByteArray("[Settings]\nURL=u\n") << S << " URL " << "u";
        QTest::newRow("equals sign inside the value") << QByteArray("[Settings]\nURL=a=b&c=d\n") << S << "URL"
                                                      << "a=b&c=d";

        QTest::newRow("double quotes stripped") << QByteArray("[Settings]\nURL=\"x y\"\n") << S << "URL" << "x y";
        QTest::newRow("single quotes stripped") << QByteArray("[Settings]\nURL='x y'\n") << S << "URL" << "x y";
        QTest::newRow("quotes inside blanks stripped") << QByteArray("[Settings]\nURL=  \"x\"  \n") << S << "URL" << "x";
        QTest::newRow("only one pair stripped") << QByteArray("[Settings]\nURL=\"\"x\"\"\n") << S << "URL" << "\"x\"";
        QTest::newRow("mismatched quotes kept") << QByteArray("[Settings]\nURL=\"x'\n") << S << "URL" << "\"x'";
        QTest::newRow("opening quote only kept") << QByteArray("[Settings]\nURL=\"x\n") << S << "URL" << "\"x";
        QTest::newRow("inner quotes kept") << QByteArray("[Settings]\nURL=a \"b\" c\n") << S << "URL" << "a \"b\" c";
        QTest::newRow("a lone quote kept") << QByteArray("[Settings]\nURL=\"\n") << S << "URL" << "\"";

        QTest::newRow("254 characters whole") << ("[Settings]\nV=" + longValue(254).toLatin1() + "\n") << S << "V"
                                              << longValue(254);
        QTest::newRow("255 characters cut") << ("[Settings]\nV=" + longValue(255).toLatin1() + "\n") << S << "V"
                                            << longValue(254);
        QTest::newRow("300 characters cut") << ("[Settings]\nV=" + longValue(300).toLatin1() + "\r\n") << S << "V"
                                            << longValue(254);

        QTest::newRow("cut never splits a character")
            << ("[Settings]\nV=" + QByteArray(253, 'a') + "\xF0\x9F\x98\x80zz\n") << S << "V" << QString(253, u'a');
        QTest::newRow("character before the cut kept whole")
            << ("[Settings]\nV=" + QByteArray(252, 'a') + "\xF0\x9F\x98\x80zz\n") << S << "V"
            << QString(252, u'a') + QString::fromUtf8("\xF0\x9F\x98\x80");

        QTest::newRow("empty value") << QByteArray("[Settings]\nURL=\n") << S << "URL" << kDefault;
        QTest::newRow("blank value") << QByteArray("[Settings]\nURL=   \n") << S << "URL" << kDefault;
        QTest::newRow("empty quotes") << QByteArray("[Settings]\nURL=\"\"\n") << S << "URL" << kDefault;
        QTest::newRow("missing key") << QByteArray("[Settings]\nURL=u\n") << S << "V0" << kDefault;
        QTest::newRow("missing section") << QByteArray("[Settings]\nURL=u\n") << "Buttons" << "URL" << kDefault;
        QTest::newRow("key before any section") << QByteArray("URL=u\n[Settings]\nV0=x\n") << S << "URL" << kDefault;
        QTest::newRow("commented key") << QByteArray("[Settings]\n;URL=bad\nURL=good\n") << S << "URL" << "good";
        QTest::newRow("line without equals sign") << QByteArray("[Settings]\nURL\nURL=u\n") << S << "URL" << "u";
        QTest::newRow("empty file") << QByteArray() << S << "URL" << kDefault;
    }

    void read()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, expected);

        const QString file = newFile(bytes);
        QCOMPARE(GetKeyValue(section, key, kDefault, QString(), QString(), file), expected);
    }

    void missingFileOrFolderReadsDefault()
    {
        const QString missingFile = m_home.file(QStringLiteral("read/none.ini"));
        const QString missingFolder = m_home.file(QStringLiteral("no-such-folder/none.ini"));
        QCOMPARE(GetKeyValue(QStringLiteral("Settings"), QStringLiteral("URL"), kDefault, QString(), QString(),
                             missingFile),
                 kDefault);
        QCOMPARE(GetKeyValue(QStringLiteral("Settings"), QStringLiteral("URL"), kDefault, QString(), QString(),
                             missingFolder),
                 kDefault);
        QVERIFY(!QFileInfo::exists(missingFile));
        QVERIFY(!QFileInfo::exists(QFileInfo(missingFolder).path()));
    }

    void typeCheck_data()
    {
        QTest::addColumn<QByteArray>("stored"); // the line of the key, or empty for no key at all
        QTest::addColumn<QString>("defaultValue");
        QTest::addColumn<QString>("keyType");
        QTest::addColumn<QString>("failValue");
        QTest::addColumn<QString>("expected");

        QTest::newRow("Numeric, abc, fail 0") << QByteArray("Base=abc") << "0" << "Numeric" << "0" << "0";
        QTest::newRow("Numeric, abc, no fail value") << QByteArray("Base=abc") << "0" << "Numeric" << "" << "abc";
        QTest::newRow("Numeric, number") << QByteArray("Base=42") << "0" << "Numeric" << "7" << "42";
        QTest::newRow("Numeric, signed decimal") << QByteArray("Base= -1.5 ") << "0" << "Numeric" << "7" << "-1.5";
        QTest::newRow("Numeric, exponent") << QByteArray("Base=1E3") << "0" << "Numeric" << "7" << "1E3";
        QTest::newRow("Numeric, digits then text") << QByteArray("Base=12abc") << "0" << "Numeric" << "7" << "7";
        QTest::newRow("Boolean, True, fail 0") << QByteArray("Base=True") << "0" << "Boolean" << "0" << "0";
        QTest::newRow("Boolean, False, fail -1") << QByteArray("Base=False") << "0" << "Boolean" << "-1" << "-1";
        QTest::newRow("Boolean, True, no fail value") << QByteArray("Base=True") << "0" << "Boolean" << "" << "True";
        QTest::newRow("Boolean, -1") << QByteArray("Base=-1") << "0" << "Boolean" << "0" << "-1";
        QTest::newRow("Boolean, 1") << QByteArray("Base=1") << "0" << "Boolean" << "0" << "1";
        QTest::newRow("numeric in lower case: no check") << QByteArray("Base=abc") << "0" << "numeric" << "0" << "abc";
        QTest::newRow("BOOLEAN in upper case: no check") << QByteArray("Base=True") << "0" << "BOOLEAN" << "0" << "True";
        QTest::newRow("other type: no check") << QByteArray("Base=abc") << "0" << "Text" << "0" << "abc";
        QTest::newRow("missing key, numeric default") << QByteArray() << "5" << "Numeric" << "0" << "5";
        QTest::newRow("missing key, default checked too") << QByteArray() << "abc" << "Numeric" << "0" << "0";
        QTest::newRow("empty value, empty default") << QByteArray("Base=") << "" << "Numeric" << "9" << "9";
    }

    void typeCheck()
    {
        QFETCH(QByteArray, stored);
        QFETCH(QString, defaultValue);
        QFETCH(QString, keyType);
        QFETCH(QString, failValue);
        QFETCH(QString, expected);

        const QString file = newFile("[Settings]\r\n" + stored + "\r\n");
        QCOMPARE(GetKeyValue(QStringLiteral("Settings"), QStringLiteral("Base"), defaultValue, keyType, failValue, file),
                 expected);
    }

    // An empty file name means the settings file; the caller sees which file that was.
    void emptyFileNameMeansSettingsFile()
    {
        const QString settings = m_home.write(QStringLiteral("custom/MySettings.ini"), "[Buttons]\r\n1=Yellow pages\r\n");
        SetIniSettingsFile(settings);

        QString fileName;
        QCOMPARE(GetKeyValue(QStringLiteral("Buttons"), QStringLiteral("1"), kDefault, QString(), QString(), fileName),
                 QStringLiteral("Yellow pages"));
        QCOMPARE(fileName, settings);

        QString writeName;
        QVERIFY(WriteKeyValue(QStringLiteral("Buttons"), QStringLiteral("2"), QStringLiteral("Maps"), writeName));
        QCOMPARE(writeName, settings);
        QCOMPARE(TestHome::read(settings), QByteArray("[Buttons]\r\n1=Yellow pages\r\n2=Maps\r\n"));

        // A named file is left as the caller gave it.
        const QString other = m_home.write(QStringLiteral("custom/Other.ini"), "[Buttons]\r\n1=Other\r\n");
        QString named = other;
        QCOMPARE(GetKeyValue(QStringLiteral("Buttons"), QStringLiteral("1"), kDefault, QString(), QString(), named),
                 QStringLiteral("Other"));
        QCOMPARE(named, other);
    }

    // Until one is set, the settings file is Settings.ini in the program's folder, wherever the program was started.
    void settingsFileIsNeverInTheCurrentDirectory()
    {
        const QString home = m_home.write(QStringLiteral("Settings.ini"), "[Buttons]\r\n1=FromHome\r\n");
        QDir().mkpath(m_home.path() + QStringLiteral("/cwd"));
        const QString cwd = m_home.path() + QStringLiteral("/cwd");
        const QString decoy = cwd + QStringLiteral("/Settings.ini");
        {
            QFile f(decoy);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("[Buttons]\r\n1=FromCurrentDirectory\r\n");
        }
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(cwd));
        auto restore = qScopeGuard([&] { QDir::setCurrent(before); });

        QString fileName;
        QCOMPARE(GetKeyValue(QStringLiteral("Buttons"), QStringLiteral("1"), kDefault, QString(), QString(), fileName),
                 QStringLiteral("FromHome"));
        QCOMPARE(QFileInfo(fileName).canonicalFilePath(), QFileInfo(home).canonicalFilePath());
        QVERIFY(QFileInfo(fileName).isAbsolute());

        QString writeName;
        QVERIFY(WriteKeyValue(QStringLiteral("Buttons"), QStringLiteral("1"), QStringLiteral("Written"), writeName));
        QCOMPARE(TestHome::read(home), QByteArray("[Buttons]\r\n1=Written\r\n"));
        QCOMPARE(TestHome::read(decoy), QByteArray("[Buttons]\r\n1=FromCurrentDirectory\r\n"));
        QCOMPARE(QDir(cwd).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("Settings.ini")});
    }

    // With no Settings.ini in the program's folder, one in the current directory is still not read.
    void missingSettingsFileIsNotLookedForElsewhere()
    {
        QFile::remove(m_home.file(QStringLiteral("Settings.ini")));
        const QString cwd = m_home.path() + QStringLiteral("/cwd2");
        QDir().mkpath(cwd);
        {
            QFile f(cwd + QStringLiteral("/Settings.ini"));
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("[Buttons]\r\n1=FromCurrentDirectory\r\n");
        }
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(cwd));
        auto restore = qScopeGuard([&] { QDir::setCurrent(before); });

        QCOMPARE(GetKeyValue(QStringLiteral("Buttons"), QStringLiteral("1"), kDefault, QString(), QString(), QString()),
                 kDefault);
    }
};

QTEST_GUILESS_MAIN(TestIniRead)
#include "tst_iniread.moc"
