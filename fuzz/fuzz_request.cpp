// A service file and ten field texts, both from the fuzzer: planning GO, building the address and the POST page
// never fail, and an address always starts as the browser needs it.

#include "FuzzInput.h"
#include "common/Prompter.h"
#include "request/Go.h"
#include "request/PostPage.h"

#include <QDir>
#include <QTemporaryDir>

using namespace corvalent;

namespace {

struct Folder {
    Folder()
    {
        qputenv("CORVALENT_HOME", dir.path().toUtf8());
        // Error boxes go to standard error; the fuzzer runs without a screen.
        Prompter::install(std::make_unique<ConsolePrompter>());
    }
    QTemporaryDir dir;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Folder folder;
    // The service file comes first, the fields after the first NUL, one per line.
    const QByteArray input = fuzz::bytes(data, size);
    const qsizetype split = input.indexOf('\0');
    const QByteArray service = split < 0 ? input : input.left(split);
    const QStringList lines = split < 0 ? QStringList() : fuzz::text(input.mid(split + 1)).split(QLatin1Char('\n'));
    FieldTexts fields;
    for (int row = 0; row < kFieldRows && row < lines.size(); ++row)
        fields[size_t(row)] = lines.at(row);

    const QString file = folder.dir.filePath(QStringLiteral("Fuzzed.isf"));
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) || out.write(service) != service.size())
        fuzz::fail("cannot write the service file");
    out.close();

    const GoPlan plan = PlanGo(file, fields);
    if (plan.kind == GoPlan::Kind::Get && !plan.address.startsWith(QLatin1String("http://"), Qt::CaseInsensitive))
        fuzz::fail("an address without its scheme", plan.address);
    (void)PostPageContent(file, fields);
    return 0;
}
