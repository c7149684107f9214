#include "services/IniCache.h"
#include "support/IniFiles.h"

#include <QFile>
#include <QTest>

#include <chrono>
#include <filesystem>

using namespace corvalent;
using namespace corvalent::test;
namespace fs = std::filesystem;

class TestIniRead : public QObject {
    Q_OBJECT

    IniFiles m_files;

private slots:
    // Files as people write them by hand, each with LF and with CR LF line ends; null bytes mean there is no file
    // at all. A key type (with its fail value) checks what is read, the default included.
    void read_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("keyType");
        QTest::addColumn<QString>("failValue");

        const auto row = [](const char* tag, const QByteArray& lf, const char* section, const char* key,
                            const QString& expected, const char* keyType = "", const char* failValue = "") {
            for (const bool crlf : {false, true})
                QTest::addRow("%s, %s", tag, crlf ? "CR LF" : "LF")
                    << (crlf ? QByteArray(lf).replace("\n", "\r\n") : lf) << QString::fromUtf8(section)
                    << QString::fromUtf8(key) << expected << QString::fromUtf8(keyType) << QString::fromUtf8(failValue);
        };
        const QByteArray dup("[A]\nk=1\n[A]\nk=3\nj=4\n[B]\nk=2\n");
        const QByteArray emoji("\xF0\x9F\x98\x80");
        row("UTF-8", "[A]\nk=Montr\xC3\xA9" "al\nj=w\n", "A", "k", "Montréal");
        row("no final line break", "[A]\nk=v", "A", "k", "v");
        row("UTF-8 BOM", "\xEF\xBB\xBF[A]\nk=Montr\xC3\xA9" "al\n", "A", "k", "Montréal");
        row("Windows-1252", "[A]\nk=\x80 \x93q\x94 Montr\xE9" "al\n", "A", "k", "€ “q” Montréal");
        row("UTF-8 BOM, then 1252", "\xEF\xBB\xBF[A]\nk=caf\xE9\n", "A", "k", "café");
        row("duplicate key", "[A]\nk=1\nk=2\n", "A", "k", "1");
        row("duplicate section never read", dup, "A", "j", kDefault);
        row("section after a duplicate", dup, "B", "k", "2");
        row("case of names", "[SETTINGS]\nurl=MiXeD\n", "Settings", "URL", "MiXeD");
        row("blanks and tabs", " [A] \n\t k \t=  a b\t \n", "A", " k ", "a b");
        row("blanks and tabs inside the brackets", "[A]\nk=0\n[ \tSpaced Section\t ]\nk=1\n",
            "Spaced Section", "k", "1");
        row("equals sign in value", "[A]\nk=a=b\n", "A", "k", "a=b");
        row("line without equals sign", "[A]\nk\nk=v\n", "A", "k", "v");
        row("one pair of quotes", "[A]\nk=\"\"x\"\"\n", "A", "k", "\"x\"");
        row("single quotes in blanks", "[A]\nk=  'x y'  \n", "A", "k", "x y");
        row("mismatched quotes", "[A]\nk=\"x'\n", "A", "k", "\"x'");
        row("a lone quote", "[A]\nk=\"\n", "A", "k", "\"");
        row("cut never splits a pair", "[A]\nk=" + QByteArray(253, 'a') + emoji + "z\n", "A", "k", QString(253, u'a'));
        row("pair before the cut kept", "[A]\nk=" + QByteArray(252, 'a') + emoji + "z\n", "A", "k",
            QString(252, u'a') + QString::fromUtf8(emoji));
        row("empty value", "[A]\nk= \"\" \nk=x\n", "A", "k", kDefault);
        row("key before any section", "k=0\n[A]\nj=1\n", "A", "k", kDefault);
        row("missing section", "[A]\nk=1\n", "B", "k", kDefault);
        row("Numeric without FailValue", "[A]\nk=abc\n", "A", "k", "abc", "Numeric");
        row("Numeric passes", "[A]\nk= -1.5 \n", "A", "k", "-1.5", "Numeric", "0");
        row("Boolean word fails", "[A]\nk=True\n", "A", "k", "0", "Boolean", "0");
        row("lower-case type checks nothing", "[A]\nk=abc\n", "A", "k", "abc", "numeric", "0");
        row("Numeric fails, on the default too", "[A]\nk=\n", "A", "k", "0", "Numeric", "0");
        QTest::newRow("missing file") << QByteArray() << "A" << "k" << kDefault << QString() << QString();
    }

    void read()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        QFETCH(QString, keyType);
        QFETCH(QString, failValue);
        QCOMPARE(GetKeyValue(section, key, kDefault, keyType, failValue, m_files.add(bytes)), expected);
    }

    // The settings file is the program folder's, by its full path: a relative name would find whatever
    // Settings.ini the current directory happens to hold.
    void emptyFileNameIsTheSettingsFile()
    {
        const QString home = m_files.write(QStringLiteral("Settings.ini"), "[A]\r\nk=home\r\n");
        QString name;
        QCOMPARE(GetKeyValue(QStringLiteral("A"), QStringLiteral("k"), kDefault, {}, {}, name), QStringLiteral("home"));
        QCOMPARE(name, home);

        const QString custom = m_files.add("[A]\r\nk=custom\r\n"); // set by the program, as corvalent-tool does
        SetIniSettingsFile(custom);
        name.clear();
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("new"), name));
        SetIniSettingsFile(QString());
        QCOMPARE(name, custom);
        QCOMPARE(TestHome::read(custom), QByteArray("[A]\r\nk=new\r\n"));
    }

    // The reads of one request parse the file once, whether it is too recent to trust its time stamp or not.
    void unchangedFileParsedOnce_data()
    {
        QTest::addColumn<int>("ageHours");
        QTest::newRow("just written") << 0;
        QTest::newRow("an hour old") << 1;
    }

    void unchangedFileParsedOnce()
    {
        QFETCH(int, ageHours);
        const QString file = m_files.add("[A]\r\nk=7\r\n");
        fs::last_write_time(file.toStdU16String(), fs::file_time_type::clock::now() - std::chrono::hours(ageHours));
        const int before = IniCache::instance().parses();
        for (int i = 0; i < 3; ++i)
            QCOMPARE(readKey(file, QStringLiteral("A"), QStringLiteral("k")), QStringLiteral("7"));
        QCOMPARE(IniCache::instance().parses() - before, 1);
    }

    // Another program rewrites the file in place within the time stamp's granularity: same size, same stamp.
    void cacheSeesChanges()
    {
        const QString file = m_files.add("[A]\nk=aaaa\n");
        const auto k = [&] { return readKey(file, QStringLiteral("A"), QStringLiteral("k")); };
        QCOMPARE(k(), QStringLiteral("aaaa"));
        const auto stamp = fs::last_write_time(file.toStdU16String());
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadWrite) && f.seek(6) && f.write("bbbb") == 4);
        f.close();
        fs::last_write_time(file.toStdU16String(), stamp);
        QCOMPARE(k(), QStringLiteral("bbbb"));
        QVERIFY(QFile::remove(file));
        QCOMPARE(k(), kDefault);
    }
};

QTEST_GUILESS_MAIN(TestIniRead)
#include "tst_iniread.moc"
