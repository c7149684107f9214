// Helper for tst_iniatomic: rewrites one key of a large INI file over and over, alternating between the contents
// of two files, and announces each write on standard output before it starts. The test kills it at random moments.
//
// Usage: ini_writer_child <ini file> <value file A> <value file B> <max writes>

#include "services/IniLib.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

namespace {

QString readValue(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(f.readAll());
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 5) {
        std::fprintf(stderr, "usage: ini_writer_child <ini file> <value file A> <value file B> <max writes>\n");
        return 2;
    }
    const QString file = args.at(1);
    const QString values[2] = {readValue(args.at(2)), readValue(args.at(3))};
    if (values[0].isEmpty() || values[1].isEmpty()) {
        std::fprintf(stderr, "cannot read the values\n");
        return 2;
    }
    // Bounded, so that a child whose parent died does not write forever.
    const int maxWrites = args.at(4).toInt();
    for (int i = 0; i < maxWrites; ++i) {
        std::printf("write %d\n", i);
        std::fflush(stdout);
        if (!corvalent::WriteKeyValue(QStringLiteral("Data"), QStringLiteral("Blob"), values[i % 2], file)) {
            std::fprintf(stderr, "write %d failed\n", i);
            return 1;
        }
    }
    return 0;
}
