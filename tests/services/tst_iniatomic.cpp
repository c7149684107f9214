#include "support/IniFiles.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>
#include <tuple>

using namespace corvalent::test;

namespace {

constexpr int kRounds = 16;
constexpr int kWaitMs = 60000; // a bound for a child that hangs, not a pace

// Large enough that a write takes a while, with the rewritten key between much else. The versions hold different
// counts of records, so that a file cut short or spliced from both shows.
QByteArray version(char tag, int records)
{
    QByteArray bytes("[Filler]\r\n");
    for (int i = 0; i < 3000; ++i)
        bytes += "Line" + QByteArray::number(i) + "=filler text " + QByteArray::number(i * 31) + "\r\n";
    bytes += "\r\n[Data]\r\nBlob=";
    for (int i = 0; i < records; ++i)
        bytes += tag + QByteArray::number(i).rightJustified(6, '0') + ';';
    return bytes + "\r\nAfter=end\r\n";
}

} // namespace

class TestIniAtomic : public QObject {
    Q_OBJECT

    IniFiles m_files;

private slots:
    // A writer killed at any moment leaves the old file or the new one, whole: never a truncated or mixed file.
    void killedWriterLeavesAWholeFile()
    {
        const QByteArray versions[2] = {version('a', 25000), version('b', 26000)};
        const QString file = m_files.write(QStringLiteral("atomic/big.ini"), versions[0]);
        const QStringList args{file, m_files.write(QStringLiteral("atomic/a.ini"), versions[0]),
                               m_files.write(QStringLiteral("atomic/b.ini"), versions[1]), QStringLiteral("100000")};
        // What another program sees of the file without opening it.
        const auto look = [path = QFile::encodeName(file)] {
            struct stat st {};
            ::stat(path.constData(), &st);
            return std::tuple(st.st_ino, st.st_size, st.st_mtim.tv_sec, st.st_mtim.tv_nsec);
        };
        for (int round = 0; round < kRounds; ++round) {
            // Odd rounds kill right after a write was announced, while it is under way; even rounds at the first
            // sign of the file changing, the moment a writer that works in place would leave it cut short.
            QProcess child;
            child.start(QStringLiteral(INI_WRITER_CHILD), args);
            QVERIFY2(child.waitForStarted(kWaitMs), qPrintable(child.errorString()));
            const QDeadlineTimer deadline(kWaitMs);
            for (int announced = 0; announced < 1 + (round * 7) % 11;) {
                QVERIFY2(child.waitForReadyRead(int(deadline.remainingTime())), child.readAllStandardError().data());
                announced += child.readAllStandardOutput().count('\n');
            }
            const auto before = look();
            while (round % 2 == 0 && look() == before)
                QVERIFY2(!deadline.hasExpired(), "the writer never changed the file");
            child.kill();
            QVERIFY(child.waitForFinished(kWaitMs));
            QCOMPARE(child.exitStatus(), QProcess::CrashExit);

            const QByteArray bytes = TestHome::read(file);
            QVERIFY2(bytes == versions[0] || bytes == versions[1],
                     qPrintable(QStringLiteral("round %1: %2 bytes").arg(round).arg(bytes.size())));
        }
    }
};

QTEST_GUILESS_MAIN(TestIniAtomic)
#include "tst_iniatomic.moc"
