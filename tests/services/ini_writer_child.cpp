// For tst_iniatomic: rewrites Data/Blob of an INI file with the values two other files hold there, by turns, and
// announces each write before it starts, so that the test can kill it in the middle of one. Bounded, so that a
// child whose parent died does not write forever.
// Usage: ini_writer_child <ini file> <version A> <version B> <max writes>

#include "services/IniDocument.h"
#include "services/IniLib.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    QString values[2];
    for (int i = 0; i < 2 && args.size() == 5; ++i) {
        QFile f(args.at(2 + i));
        if (f.open(QIODevice::ReadOnly))
            values[i] = corvalent::IniDocument::parse(f.readAll()).value("Data", "Blob").value_or(QString());
    }
    if (values[0].isEmpty() || values[1].isEmpty()) {
        std::fprintf(stderr, "usage: ini_writer_child <ini file> <version A> <version B> <max writes>\n");
        return 2;
    }
    for (int i = 0; i < args.at(4).toInt(); ++i) {
        std::printf("write %d\n", i);
        std::fflush(stdout);
        if (!corvalent::WriteKeyValue(QStringLiteral("Data"), QStringLiteral("Blob"), values[i % 2], args.at(1))) {
            std::fprintf(stderr, "write %d failed\n", i);
            return 1;
        }
    }
    return 0;
}
