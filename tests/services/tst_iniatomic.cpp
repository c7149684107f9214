#include "services/ServiceDefinition.h"
#include "support/IniFiles.h"

#include <QTest>

#include <csignal>
#include <functional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace corvalent;
using namespace corvalent::test;

namespace {

// Large enough that a write takes a while, with the rewritten key between much else. The versions' blobs differ in
// letter and length, so that a file cut short or spliced from both shows.
QByteArray version(const QString& blob)
{
    QByteArray bytes("[Filler]\r\n");
    for (int i = 0; i < 3000; ++i)
        bytes += "Line" + QByteArray::number(i) + "=filler text " + QByteArray::number(i * 31) + "\r\n";
    return bytes + "\r\n[Data]\r\nBlob=" + blob.toLatin1() + "\r\nAfter=end\r\n";
}

// Forks a child that calls write(1), write(2), ... and announces each call before making it; kills it once
// `calls` were announced and, if `watched` is named, that file then changed. False if the child ended first.
bool killDuring(const std::function<bool(int)>& write, int calls, const QString& watched = QString())
{
    int ends[2];
    if (::pipe(ends) != 0)
        return false;
    const pid_t child = ::fork();
    if (child < 0)
        return false;
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL); // a child whose test died does not write on
        try {
            for (int i = 1; ::write(ends[1], "w", 1) == 1 && write(i); ++i) {
            }
        } catch (...) {
        }
        ::_exit(1);
    }
    ::close(ends[1]);
    int announced = 0;
    for (char c; announced < calls && ::read(ends[0], &c, 1) == 1;)
        ++announced;
    const qint64 size = QFileInfo(watched).size(); // the versions differ in size, and a file cut short shows too
    while (!watched.isEmpty() && QFileInfo(watched).size() == size && ::waitpid(child, nullptr, WNOHANG) == 0) {
    }
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ::close(ends[0]);
    return announced == calls && WIFSIGNALED(status);
}

} // namespace

class TestIniAtomic : public QObject {
    Q_OBJECT

    IniFiles m_files;

private slots:
    // A writer killed at any moment leaves the old file or the new one, whole: never a truncated or mixed file.
    void killedWriterLeavesAWholeFile()
    {
        const QString blobs[2] = {QString(200000, u'a'), QString(208000, u'b')};
        const QByteArray versions[2] = {version(blobs[0]), version(blobs[1])};
        const QString file = m_files.write(QStringLiteral("atomic/big.ini"), versions[0]);
        const auto write = [&](int i) {
            return WriteKeyValue(QStringLiteral("Data"), QStringLiteral("Blob"), blobs[i % 2], file);
        };
        for (int round = 0; round < 16; ++round) {
            // Odd rounds kill while a write is under way; even rounds at the first sign of the file changing, the
            // moment a writer that works in place would leave it cut short.
            QVERIFY2(killDuring(write, 1 + (round * 7) % 11, round % 2 ? QString() : file), "the writer failed");
            const QByteArray bytes = TestHome::read(file);
            QVERIFY2(bytes == versions[0] || bytes == versions[1],
                     qPrintable(QStringLiteral("round %1: %2 bytes").arg(round).arg(bytes.size())));
        }
    }

    // A saver killed at any moment, a few hundred saves in all, each a rename, leaves complete services only: the
    // old one, the new one, or (killed between writing the new and deleting the old) both.
    void killedSaveLeavesWholeServices()
    {
        const QString folder = m_files.file(QStringLiteral("killed"));
        const auto variant = [](int which) {
            ServiceDefinition s; // the same keys with other values, so that a file from either save shows which
            s.name = which % 2 ? QStringLiteral("Kill.2") : QStringLiteral("Kill");
            s.url = which % 2 ? QStringLiteral("b.example.org/search?x=1") : QStringLiteral("a.example.org/find?");
            s.variables.fill(QStringLiteral("v%1").arg(which % 2));
            return s;
        };
        QMap<QString, QByteArray> whole; // by file name
        for (const int which : {0, 1}) {
            const QString scratch = m_files.add();
            QVERIFY(WriteNewService(scratch, variant(which)));
            whole.insert(QFileInfo(ServiceFilePath(folder, variant(which).name)).fileName(), TestHome::read(scratch));
        }
        QString path = ServiceFilePath(folder, variant(0).name);
        QVERIFY(QDir().mkpath(folder));
        for (int round = 0; round < 23; ++round) {
            // Each child starts from the old service alone.
            QFile::remove(ServiceFilePath(folder, variant(1).name));
            QVERIFY(WriteNewService(path, variant(0)));
            QVERIFY2(killDuring([&](int i) { return SaveEditedService(path, variant(i)); }, 1 + (round * 7) % 23),
                     "the saver failed");
            const QStringList services = QDir(folder).entryList({QStringLiteral("*.isf")}, QDir::Files);
            QVERIFY2(!services.isEmpty(), qPrintable(QStringLiteral("round %1: no service left").arg(round)));
            for (const QString& name : services)
                QVERIFY2(TestHome::read(QDir(folder).filePath(name)) == whole.value(name),
                         qPrintable(QStringLiteral("round %1: %2 is not a whole service").arg(round).arg(name)));
        }
    }
};

QTEST_GUILESS_MAIN(TestIniAtomic)
#include "tst_iniatomic.moc"
