#include "services/IniDocument.h"
#include "services/IniLib.h"

#include "support/TestHome.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>

using namespace corvalent;
using corvalent::test::TestHome;

namespace {

constexpr int kRounds = 20;
constexpr int kWaitMs = 60000; // a bound for a child that hangs, not a pace

// Two large values of different lengths, so that a file cut short or spliced from both shows.
QByteArray bigValue(char tag, int records)
{
    QByteArray value;
    for (int i = 0; i < records; ++i)
        value += tag + QByteArray::number(i).rightJustified(6, '0') + ';';
    return value;
}

QByteArray fileWith(const QByteArray& blob)
{
    QByteArray bytes("; a large file, rewritten while the writer is killed\r\n[Filler]\r\n");
    for (int i = 0; i < 3000; ++i)
        bytes += "Line" + QByteArray::number(i) + "=filler text number " + QByteArray::number(i * 31) + "\r\n";
    bytes += "\r\n[Data]\r\nBlob=" + blob + "\r\nAfter=end\r\n\r\n[Tail]\r\n";
    for (int i = 0; i < 1000; ++i)
        bytes += "T" + QByteArray::number(i) + "=tail " + QByteArray::number(i) + "\r\n";
    return bytes;
}

// What another program sees of the file without opening it.
struct Look {
    ino_t inode = 0;
    off_t size = -1;
    timespec modified{};
    bool operator==(const Look& o) const
    {
        return inode == o.inode && size == o.size && modified.tv_sec == o.modified.tv_sec
            && modified.tv_nsec == o.modified.tv_nsec;
    }
};

Look lookAt(const QString& path)
{
    struct stat st {};
    Look look;
    if (::stat(QFile::encodeName(path).constData(), &st) == 0) {
        look.inode = st.st_ino;
        look.size = st.st_size;
        look.modified = st.st_mtim;
    }
    return look;
}

} // namespace

class TestIniAtomic : public QObject {
    Q_OBJECT

private:
    TestHome m_home;

private slots:
    // A writer killed at any moment leaves the old file or the new one, whole: never a truncated or mixed file.
    void killedWriterLeavesAWholeFile()
    {
        const QByteArray a = bigValue('a', 25000); // 200 000 bytes
        const QByteArray b = bigValue('b', 26000); // 208 000 bytes
        const QByteArray versionA = fileWith(a);
        const QByteArray versionB = fileWith(b);
        const QString valueA = m_home.write(QStringLiteral("atomic/a.txt"), a);
        const QString valueB = m_home.write(QStringLiteral("atomic/b.txt"), b);
        const QString file = m_home.write(QStringLiteral("atomic/big.ini"), versionA);

        int seen[2] = {0, 0};
        for (int round = 0; round < kRounds; ++round) {
            // Kill after a varying number of announced writes: in odd rounds right after an announcement, while that
            // write is under way; in even rounds at the first sign that the file is being changed, the moment a
            // writer that works in place would leave it cut short.
            const int announcements = 1 + (round * 7) % 11;
            const bool atFirstChange = round % 2 == 0;

            QProcess child;
            child.setProcessChannelMode(QProcess::SeparateChannels);
            child.start(QStringLiteral(INI_WRITER_CHILD), {file, valueA, valueB, QStringLiteral("100000")});
            QVERIFY2(child.waitForStarted(kWaitMs), qPrintable(child.errorString()));

            QByteArray out;
            const QDeadlineTimer deadline(kWaitMs);
            while (out.count('\n') < announcements) {
                if (!child.waitForReadyRead(int(deadline.remainingTime())))
                    QFAIL(qPrintable(QStringLiteral("round %1: writer gave %2 lines, then: %3")
                                         .arg(round)
                                         .arg(out.count('\n'))
                                         .arg(QString::fromLocal8Bit(child.readAllStandardError()))));
                out += child.readAllStandardOutput();
            }
            if (atFirstChange) {
                const Look before = lookAt(file);
                while (lookAt(file) == before && !deadline.hasExpired()) {
                }
                QVERIFY2(!deadline.hasExpired(), "the writer never changed the file");
            }
            child.kill();
            QVERIFY(child.waitForFinished(kWaitMs));
            QCOMPARE(child.exitStatus(), QProcess::CrashExit);

            const QByteArray bytes = TestHome::read(file);
            const bool isA = bytes == versionA;
            const bool isB = bytes == versionB;
            QVERIFY2(isA || isB, qPrintable(QStringLiteral("round %1: %2 bytes, expected %3 or %4")
                                                .arg(round)
                                                .arg(bytes.size())
                                                .arg(versionA.size())
                                                .arg(versionB.size())));
            ++seen[isA ? 0 : 1];

            // And the program reads it as a whole file.
            const IniDocument doc = IniDocument::parse(bytes);
            QCOMPARE(doc.value(QStringLiteral("Data"), QStringLiteral("Blob"))->size(), (isA ? a : b).size());
            QCOMPARE(GetKeyValue(QStringLiteral("Tail"), QStringLiteral("T999"), QString(), QString(), QString(), file),
                     QStringLiteral("tail 999"));
        }
        qInfo("old/new version found after the kills: %d a, %d b", seen[0], seen[1]);
    }
};

QTEST_GUILESS_MAIN(TestIniAtomic)
#include "tst_iniatomic.moc"
