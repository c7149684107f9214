#include "services/IniLib.h"

#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>
#include <QTest>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace corvalent;
using corvalent::test::TestHome;

namespace {

QByteArray utf16le(const QString& text)
{
    return QByteArray("\xFF\xFE", 2) + QStringEncoder(QStringEncoder::Utf16LE)(text);
}

} // namespace

class TestIniWrite : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    int m_files = 0;

    QString newFile(const QByteArray& bytes)
    {
        return m_home.write(QStringLiteral("write/%1.ini").arg(++m_files), bytes);
    }

    QString freshPath() { return m_home.file(QStringLiteral("write/new%1.ini").arg(++m_files)); }

private slots:
    // Each row: a file as someone wrote it by hand, one write, and the whole file expected afterwards.
    void write_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("replace in place, CRLF")
            << QByteArray("[Settings]\r\nName=a\r\nURL=old\r\nV0=v\r\n") << "Settings" << "URL" << "new"
            << QByteArray("[Settings]\r\nName=a\r\nURL=new\r\nV0=v\r\n");
        QTest::newRow("replace in place, LF")
            << QByteArray("[Settings]\nName=a\nURL=old\nV0=v\n") << "Settings" << "URL" << "new"
            << QByteArray("[Settings]\nName=a\nURL=new\nV0=v\n");
        QTest::newRow("replace the last line without a line break")
            << QByteArray("[Settings]\nURL=old") << "Settings" << "URL" << "new" << QByteArray("[Settings]\nURL=new");
        QTest::newRow("replace by any case of the names")
            << QByteArray("[SETTINGS]\r\nurl = old\r\n") << "Settings" << "URL" << "new"
            << QByteArray("[SETTINGS]\r\nurl=new\r\n");
        QTest::newRow("replace a longer value by a shorter one")
            << QByteArray("[A]\r\nk=a long old value\r\nj=1\r\n") << "A" << "k" << "s"
            << QByteArray("[A]\r\nk=s\r\nj=1\r\n");
        QTest::newRow("replace the first of duplicate keys only")
            << QByteArray("[A]\nk=1\nk=2\n") << "A" << "k" << "9" << QByteArray("[A]\nk=9\nk=2\n");
        QTest::newRow("replace in the named section only")
            << QByteArray("[Other]\r\nURL=keep\r\n[Settings]\r\nURL=old\r\n") << "Settings" << "URL" << "new"
            << QByteArray("[Other]\r\nURL=keep\r\n[Settings]\r\nURL=new\r\n");

        QTest::newRow("new key before the blank line that separates sections")
            << QByteArray("[A]\r\nk=1\r\n\r\n[B]\r\nj=2\r\n") << "A" << "n" << "3"
            << QByteArray("[A]\r\nk=1\r\nn=3\r\n\r\n[B]\r\nj=2\r\n");
        QTest::newRow("new key right before the next header")
            << QByteArray("[A]\nk=1\n[B]\nj=2\n") << "A" << "n" << "3" << QByteArray("[A]\nk=1\nn=3\n[B]\nj=2\n");
        QTest::newRow("new key in the last section without a final line break")
            << QByteArray("[A]\nk=1") << "A" << "n" << "2" << QByteArray("[A]\nk=1\nn=2\n");
        QTest::newRow("new key before trailing blank lines")
            << QByteArray("[A]\nk=1\n\n\n") << "A" << "n" << "2" << QByteArray("[A]\nk=1\nn=2\n\n\n");
        QTest::newRow("new key in an empty section")
            << QByteArray("[A]\r\n[B]\r\nj=1\r\n") << "A" << "k" << "1" << QByteArray("[A]\r\nk=1\r\n[B]\r\nj=1\r\n");
        QTest::newRow("new key after a trailing comment of its section")
            << QByteArray("[A]\r\nk=1\r\n; end of A\r\n\r\n[B]\r\n") << "A" << "n" << "2"
            << QByteArray("[A]\r\nk=1\r\n; end of A\r\nn=2\r\n\r\n[B]\r\n");
        QTest::newRow("new key goes to the first of duplicate sections")
            << QByteArray("[A]\nk=1\n[B]\n[A]\nj=2\n") << "A" << "n" << "3"
            << QByteArray("[A]\nk=1\nn=3\n[B]\n[A]\nj=2\n");
        QTest::newRow("new section at the end, CRLF")
            << QByteArray("[A]\r\nk=1\r\n") << "B" << "j" << "2" << QByteArray("[A]\r\nk=1\r\n\r\n[B]\r\nj=2\r\n");
        QTest::newRow("new section at the end, LF, no final line break")
            << QByteArray("[A]\nk=1") << "B" << "j" << "2" << QByteArray("[A]\nk=1\n\n[B]\nj=2\n");

        QTest::newRow("comments, unknown and blank lines kept")
            << QByteArray("; written by hand\r\n[Settings]\r\n; a comment\r\nnot a key line\r\nURL=old\r\n# hash\r\n"
                          "\r\n[Other]\r\nURL=keep\r\n")
            << "Settings" << "URL" << "new"
            << QByteArray("; written by hand\r\n[Settings]\r\n; a comment\r\nnot a key line\r\nURL=new\r\n# hash\r\n"
                          "\r\n[Other]\r\nURL=keep\r\n");
        QTest::newRow("odd spacing of untouched lines kept")
            << QByteArray("  [Settings]  \n  Name  =  \"quoted\"  \n\tURL=old\n") << "Settings" << "URL" << "new"
            << QByteArray("  [Settings]  \n  Name  =  \"quoted\"  \nURL=new\n");
        QTest::newRow("value written as given")
            << QByteArray("[A]\r\nk=1\r\n") << "A" << "k" << " \"quoted\" ; not a comment "
            << QByteArray("[A]\r\nk= \"quoted\" ; not a comment \r\n");

        QTest::newRow("UTF-8 BOM kept")
            << QByteArray("\xEF\xBB\xBF[Settings]\r\nCity=Montr\xC3\xA9" "al\r\n") << "Settings" << "City" << "Québec"
            << QByteArray("\xEF\xBB\xBF[Settings]\r\nCity=Qu\xC3\xA9" "bec\r\n");
        QTest::newRow("UTF-8 without BOM stays without")
            << QByteArray("[Settings]\nCity=x\n") << "Settings" << "City" << "Montréal"
            << QByteArray("[Settings]\nCity=Montr\xC3\xA9" "al\n");
        QTest::newRow("Windows-1252 kept byte for byte")
            << QByteArray("; caf\xE9 \x80 \x93\x94\r\n[Settings]\r\nCity=Montr\xE9" "al\r\nURL=old\r\nNote=na\xEF" "ve\r\n")
            << "Settings" << "URL" << "new"
            << QByteArray("; caf\xE9 \x80 \x93\x94\r\n[Settings]\r\nCity=Montr\xE9" "al\r\nURL=new\r\nNote=na\xEF" "ve\r\n");
        QTest::newRow("UTF-8 BOM followed by Windows-1252 bytes kept byte for byte")
            << QByteArray("\xEF\xBB\xBF[Settings]\r\nCity=Montr\xE9" "al\r\nURL=old\r\n") << "Settings" << "URL"
            << "new" << QByteArray("\xEF\xBB\xBF[Settings]\r\nCity=Montr\xE9" "al\r\nURL=new\r\n");
        QTest::newRow("Windows-1252 value written in Windows-1252")
            << QByteArray("[Settings]\r\nCity=Montr\xE9" "al\r\n") << "Settings" << "City" << "Québec €"
            << QByteArray("[Settings]\r\nCity=Qu\xE9" "bec \x80\r\n");
        QTest::newRow("Windows-1252 bytes the code page leaves undefined kept")
            << QByteArray("[A]\r\nx=\x81\x8D\x8F\x90\x9D\xE9\r\nk=1\r\n") << "A" << "k" << "2"
            << QByteArray("[A]\r\nx=\x81\x8D\x8F\x90\x9D\xE9\r\nk=2\r\n");
        // Nothing may be lost: a character Windows-1252 cannot hold turns the file into UTF-8, old text included.
        QTest::newRow("Windows-1252 file given a character it cannot hold")
            << QByteArray("[A]\r\nk=caf\xE9\r\n") << "A" << "j" << "Łódź"
            << QByteArray("[A]\r\nk=caf\xC3\xA9\r\nj=\xC5\x81\xC3\xB3" "d\xC5\xBA\r\n");
        QTest::newRow("UTF-16 kept")
            << utf16le(QStringLiteral("[A]\r\nk=1\r\ncity=Montréal\r\n")) << "A" << "k" << "Łódź"
            << utf16le(QStringLiteral("[A]\r\nk=Łódź\r\ncity=Montréal\r\n"));
    }

    void write()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);

        const QString file = newFile(before);
        QVERIFY(WriteKeyValue(section, key, value, file));
        QCOMPARE(TestHome::read(file), after);
    }

    void firstWriteCreatesFileAndSection()
    {
        const QString file = freshPath();
        QVERIFY(!QFileInfo::exists(file));
        QVERIFY(WriteKeyValue(QStringLiteral("Settings"), QStringLiteral("URL"), QStringLiteral("http://x"), file));
        QVERIFY(WriteKeyValue(QStringLiteral("Settings"), QStringLiteral("V0"), QStringLiteral("q"), file));
        QVERIFY(WriteKeyValue(QStringLiteral("Buttons"), QStringLiteral("1"), QStringLiteral("Maps"), file));
        QCOMPARE(TestHome::read(file), QByteArray("[Settings]\r\nURL=http://x\r\nV0=q\r\n\r\n[Buttons]\r\n1=Maps\r\n"));
    }

    // Written values read back as written, through every rule of reading.
    void writtenValueReadsBack_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("plain") << "http://example.com/a?b=c&d=";
        QTest::newRow("accented") << "Montréal";
        QTest::newRow("euro and quotes") << "€ “x”";
        QTest::newRow("semicolon") << "a;b";
        QTest::newRow("brackets") << "[not a section]";
    }

    void writtenValueReadsBack()
    {
        QFETCH(QString, value);
        for (const QByteArray& start : {QByteArray(), QByteArray("[S]\r\nk=caf\xE9\r\n"), QByteArray("[S]\nk=x\n")}) {
            const QString file = start.isEmpty() ? freshPath() : newFile(start);
            QVERIFY(WriteKeyValue(QStringLiteral("S"), QStringLiteral("k"), value, file));
            QCOMPARE(GetKeyValue(QStringLiteral("S"), QStringLiteral("k"), QString(), QString(), QString(), file), value);
        }
    }

    void lineBreakRefused_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("LF") << "a\nb";
        QTest::newRow("CR") << "a\rb";
        QTest::newRow("CRLF") << "a\r\nb";
        QTest::newRow("trailing LF") << "a\n";
        QTest::newRow("a section header smuggled in") << "x\n[Evil]\nk=1";
    }

    void lineBreakRefused()
    {
        QFETCH(QString, value);
        const QByteArray before("[Settings]\r\nURL=old\r\n");
        const QString file = newFile(before);
        QVERIFY(!WriteKeyValue(QStringLiteral("Settings"), QStringLiteral("URL"), value, file));
        QVERIFY(!WriteKeyValue(QStringLiteral("Settings"), QStringLiteral("New"), value, file));
        QCOMPARE(TestHome::read(file), before);

        const QString missing = freshPath();
        QVERIFY(!WriteKeyValue(QStringLiteral("Settings"), QStringLiteral("URL"), value, missing));
        QVERIFY(!QFileInfo::exists(missing));
    }

    void missingFolderAnswersFalse()
    {
        const QString folder = m_home.file(QStringLiteral("no-such-folder"));
        const QString file = folder + QStringLiteral("/x.ini");
        QVERIFY(!WriteKeyValue(QStringLiteral("Settings"), QStringLiteral("URL"), QStringLiteral("u"), file));
        QVERIFY(!QFileInfo::exists(folder));
    }

    void symlinkWrittenThrough_data()
    {
        QTest::addColumn<QString>("linkFolder");
        QTest::addColumn<QString>("target"); // as stored in the link
        QTest::newRow("relative, same folder") << "links1" << "real.ini";
        QTest::newRow("relative, other folder") << "links2" << "../targets2/real.ini";
        QTest::newRow("absolute") << "links3" << "";
    }

    void symlinkWrittenThrough()
    {
        QFETCH(QString, linkFolder);
        QFETCH(QString, target);

        const QString dir = m_home.file(linkFolder);
        QDir().mkpath(dir);
        QString real;
        if (target.isEmpty()) {
            real = m_home.write(QStringLiteral("targets3/real.ini"), "[A]\r\nk=old\r\n");
            target = real;
        } else {
            real = QDir::cleanPath(dir + QLatin1Char('/') + target);
            m_home.write(QDir(m_home.programFolder()).relativeFilePath(real), "[A]\r\nk=old\r\n");
        }
        const QString link = dir + QStringLiteral("/link.ini");
#ifndef Q_OS_UNIX
        QSKIP("symbolic links as the user makes them exist on Unix only");
#else
        QCOMPARE(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(link).constData()), 0);

        // Run from elsewhere, so that a relative link is not resolved against the current directory by luck.
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_home.path()));
        auto restore = qScopeGuard([&] { QDir::setCurrent(before); });
        const QStringList entries = QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::System);

        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("new"), link));
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("j"), QStringLiteral("2"), link));

        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(QFile::symLinkTarget(link), QFileInfo(real).absoluteFilePath());
        QCOMPARE(TestHome::read(real), QByteArray("[A]\r\nk=new\r\nj=2\r\n"));
        QCOMPARE(GetKeyValue(QStringLiteral("A"), QStringLiteral("k"), QString(), QString(), QString(), link),
                 QStringLiteral("new"));
        QCOMPARE(QDir(dir).entryList(QDir::Files | QDir::Hidden | QDir::System), entries);
#endif
    }

    // A user who keeps the settings file private keeps it private after the program wrote to it.
    void permissionsKept()
    {
        const QString file = newFile("[A]\r\nk=1\r\n");
        const auto mode = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        QVERIFY(QFile::setPermissions(file, mode));
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("2"), file));
        QCOMPARE(QFile::permissions(file), mode);
    }
};

QTEST_GUILESS_MAIN(TestIniWrite)
#include "tst_iniwrite.moc"
