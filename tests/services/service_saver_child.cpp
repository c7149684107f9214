// For tst_servicedefinition: saves one service again and again, by turns under two names (a rename each time)
// and with two sets of values, and announces each finished save, so that the test can kill it in the middle of
// one. Bounded, so that a child whose parent died does not write forever.
// Usage: service_saver_child <presets folder> <max saves>

#include "KillVariants.h"
#include "common/Error.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: service_saver_child <presets folder> <max saves>\n");
        return 2;
    }
    QString path = corvalent::test::killVariantFile(args.at(1), 0);
    for (int i = 1; i <= args.at(2).toInt(); ++i) {
        try {
            corvalent::SaveEditedService(path, corvalent::test::killVariant(i % 2));
        } catch (const corvalent::Error& e) {
            std::fprintf(stderr, "save %d failed: %s\n", i, e.what());
            return 1;
        }
        std::printf("saved %d\n", i);
        std::fflush(stdout);
    }
    return 0;
}
