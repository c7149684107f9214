#include "support/IniFiles.h"

#include <QFile>
#include <QStringEncoder>
#include <QTest>

using namespace corvalent;
using namespace corvalent::test;

class TestIniWrite : public QObject {
    Q_OBJECT

    IniFiles m_files;

private slots:
    // A file as someone left it (null: no file yet), one write of A/k, and the whole file expected afterwards;
    // files that have line ends are tried with LF and with CR LF.
    void write_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after");

        const auto row = [](const char* tag, const QByteArray& before, const char* value, const QByteArray& after) {
            const auto crlf = [](QByteArray lf) { return lf.replace("\n", "\r\n"); };
            QTest::addRow("%s, LF", tag) << before << QString::fromUtf8(value) << after;
            QTest::addRow("%s, CR LF", tag) << crlf(before) << QString::fromUtf8(value) << crlf(after);
        };
        const auto utf16 = [](const QString& text) {
            return QByteArray("\xFF\xFE") + QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(text));
        };
        row("in place, hand-written lines kept, value as given", "; hand\n[a]\n; note\nno key\n K = old\nj=1\n",
            " \"q\" ;x", "; hand\n[a]\n; note\nno key\nK= \"q\" ;x\nj=1\n");
        row("in place, first of duplicates, named section only, UTF-8 without BOM", "[B]\nk=keep\n[A]\nk=1\nk=2",
            "Montréal", "[B]\nk=keep\n[A]\nk=Montr\xC3\xA9" "al\nk=2");
        row("new key before the blank line", "[A]\nj=1\n\n[B]\n", "2", "[A]\nj=1\nk=2\n\n[B]\n");
        row("new key, no final line break", "[A]\nj=1", "2", "[A]\nj=1\nk=2\n");
        row("new section, line ends kept", "[B]\nj=1", "2", "[B]\nj=1\n\n[A]\nk=2\n");
        row("UTF-8 BOM kept", "\xEF\xBB\xBF[A]\nk=1\n", "é", "\xEF\xBB\xBF[A]\nk=\xC3\xA9\n");
        row("Windows-1252 kept", "; caf\xE9\n[A]\nk=1\n", "Québec €", "; caf\xE9\n[A]\nk=Qu\xE9" "bec \x80\n");
        row("UTF-8 BOM, then 1252 kept", "\xEF\xBB\xBF[A]\nc=\xE9\nk=1\n", "2", "\xEF\xBB\xBF[A]\nc=\xE9\nk=2\n");
        // Nothing may be lost: a character the code page cannot hold turns the whole file into UTF-8.
        row("1252 becomes UTF-8", "[A]\nc=caf\xE9\n", "Łódź", "[A]\nc=caf\xC3\xA9\nk=\xC5\x81\xC3\xB3" "d\xC5\xBA\n");
        QTest::newRow("new file") << QByteArray() << "1" << QByteArray("[A]\r\nk=1\r\n");
        QTest::newRow("UTF-16 kept") << utf16(QStringLiteral("[A]\r\nk=1\r\n")) << "Łódź"
                                     << utf16(QStringLiteral("[A]\r\nk=Łódź\r\n"));
    }

    void write()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);
        const QString file = m_files.add(before);
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), value, file));
        QCOMPARE(TestHome::read(file), after);
    }

    // A line break would let a value smuggle in keys or sections; a missing folder is not made up.
    void refusedWritesChangeNothing()
    {
        const QByteArray before("[A]\r\nk=1\r\n");
        const QString file = m_files.add(before);
        QVERIFY(!WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("a\nb"), file));
        QVERIFY(!WriteKeyValue(QStringLiteral("A"), QStringLiteral("j"), QStringLiteral("a\rb"), file));
        QCOMPARE(TestHome::read(file), before);
        QVERIFY(!WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("1"),
                               m_files.file(QStringLiteral("none/x.ini"))));
    }

    // The link, relative and into another folder, stays a link; the file it points to gets the change.
    void symlinkWrittenThrough()
    {
        const QString real = m_files.write(QStringLiteral("real/x.ini"), "[A]\r\nk=old\r\n");
        const QString link = m_files.add();
        QVERIFY(QFile::link(QStringLiteral("../real/x.ini"), link));
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("new"), link));
        QCOMPARE(QFile::symLinkTarget(link), real);
        QCOMPARE(TestHome::read(real), QByteArray("[A]\r\nk=new\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestIniWrite)
#include "tst_iniwrite.moc"
