#include "services/IniCache.h"
#include "services/IniLib.h"

#include "support/TestHome.h"

#include <QFile>
#include <QTest>

#include <chrono>
#include <filesystem>

using namespace corvalent;
using corvalent::test::TestHome;

namespace {

namespace fs = std::filesystem;

const QString kDefault = QStringLiteral("<default>");

QString read(const QString& file, const QString& key, const QString& section = QStringLiteral("A"))
{
    return GetKeyValue(section, key, kDefault, QString(), QString(), file);
}

// Another program rewriting the file in place, as an editor or a copy tool does.
void overwrite(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
        qFatal("cannot overwrite %s", qPrintable(path));
}

fs::path native(const QString& path)
{
    return fs::path(path.toStdU16String());
}

} // namespace

class TestIniCache : public QObject {
    Q_OBJECT

private:
    TestHome m_home;
    int m_files = 0;

    QString newFile(const QByteArray& bytes)
    {
        return m_home.write(QStringLiteral("cache/%1.ini").arg(++m_files), bytes);
    }

private slots:
    void init() { IniCache::instance().clear(); }

    void unchangedFileParsedOnce_data()
    {
        QTest::addColumn<bool>("oldFile");
        QTest::newRow("just written") << false;
        QTest::newRow("written an hour ago") << true;
    }

    void unchangedFileParsedOnce()
    {
        QFETCH(bool, oldFile);
        QByteArray bytes("[A]\r\n");
        for (int i = 0; i < 25; ++i)
            bytes += "k" + QByteArray::number(i) + "=v" + QByteArray::number(i * 7) + "\r\n";
        const QString file = newFile(bytes);
        if (oldFile)
            fs::last_write_time(native(file), fs::file_time_type::clock::now() - std::chrono::hours(1));

        const int before = IniCache::instance().parses();
        for (int i = 0; i < 25; ++i)
            QCOMPARE(read(file, QStringLiteral("k%1").arg(i)), QStringLiteral("v%1").arg(i * 7));
        QCOMPARE(IniCache::instance().parses() - before, 1);
    }

    // Another program changes the file right after a read; the next read must see the change, even when size and
    // modification time did not move.
    void changeBehindTheCacheSeen_data()
    {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<bool>("keepStamp");
        QTest::addColumn<QString>("expected");

        QTest::newRow("same size, same stamp") << QByteArray("[A]\nk=aaaa\n") << QByteArray("[A]\nk=bbbb\n") << true
                                               << "bbbb";
        QTest::newRow("same size, new stamp") << QByteArray("[A]\nk=aaaa\n") << QByteArray("[A]\nk=bbbb\n") << false
                                              << "bbbb";
        QTest::newRow("other size") << QByteArray("[A]\nk=aaaa\n") << QByteArray("[A]\nk=longer\n") << false
                                    << "longer";
        QTest::newRow("key gone, same size, same stamp") << QByteArray("[A]\nk=aaaa\n") << QByteArray("[A]\nj=aaaa\n")
                                                         << true << kDefault;
        QTest::newRow("encoding changed, same stamp") << QByteArray("[A]\nk=Montr\xC3\xA9" "al\n")
                                                      << QByteArray("[A]\nk=Montr\xE9" "al!\n") << true << "Montréal!";
    }

    void changeBehindTheCacheSeen()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(bool, keepStamp);
        QFETCH(QString, expected);

        const QString file = newFile(first);
        QVERIFY(read(file, QStringLiteral("k")) != expected);
        const auto stamp = fs::last_write_time(native(file));
        overwrite(file, second);
        if (keepStamp)
            fs::last_write_time(native(file), stamp);
        QCOMPARE(read(file, QStringLiteral("k")), expected);
        // And again, now that the cache holds the new parse.
        QCOMPARE(read(file, QStringLiteral("k")), expected);
    }

    void removedFileReadsDefault()
    {
        const QString file = newFile("[A]\nk=1\n");
        QCOMPARE(read(file, QStringLiteral("k")), QStringLiteral("1"));
        QVERIFY(QFile::remove(file));
        QCOMPARE(read(file, QStringLiteral("k")), kDefault);
    }

    void fileCreatedAfterAMissSeen()
    {
        const QString file = m_home.file(QStringLiteral("cache/late.ini"));
        QCOMPARE(read(file, QStringLiteral("k")), kDefault);
        overwrite(file, "[A]\nk=here\n");
        QCOMPARE(read(file, QStringLiteral("k")), QStringLiteral("here"));
    }

    void ownWriteSeenAtOnce()
    {
        const QString file = newFile("[A]\r\nk=0\r\n");
        for (int i = 1; i <= 10; ++i) {
            QCOMPARE(read(file, QStringLiteral("k")), QString::number(i - 1));
            QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QString::number(i), file));
            QCOMPARE(read(file, QStringLiteral("k")), QString::number(i));
        }
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("new"), QStringLiteral("n"), file));
        QCOMPARE(read(file, QStringLiteral("new")), QStringLiteral("n"));
    }

    // The cache knows files by the name they were read under; a write under another name must still be seen.
    void writeUnderAnotherNameSeen()
    {
        const QString file = newFile("[A]\r\nk=0\r\n");
        const QString other = m_home.file(QStringLiteral("cache/./")) + QFileInfo(file).fileName();
        QCOMPARE(read(file, QStringLiteral("k")), QStringLiteral("0"));
        QCOMPARE(read(other, QStringLiteral("k")), QStringLiteral("0"));
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("1"), other));
        QCOMPARE(read(file, QStringLiteral("k")), QStringLiteral("1"));
        QVERIFY(WriteKeyValue(QStringLiteral("A"), QStringLiteral("k"), QStringLiteral("2"), file));
        QCOMPARE(read(other, QStringLiteral("k")), QStringLiteral("2"));
    }

    // More files than the cache keeps: every read still answers from its own file.
    void manyFilesReadCorrectly()
    {
        QStringList files;
        for (int i = 0; i < 100; ++i)
            files << newFile("[A]\nk=" + QByteArray::number(i) + "\n");
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < files.size(); ++i)
                QCOMPARE(read(files.at(i), QStringLiteral("k")), QString::number(i));
        }
        overwrite(files.first(), "[A]\nk=changed\n");
        QCOMPARE(read(files.first(), QStringLiteral("k")), QStringLiteral("changed"));
    }
};

QTEST_GUILESS_MAIN(TestIniCache)
#include "tst_inicache.moc"
