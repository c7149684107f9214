// corvalent-contacts: the contact manager that stands where ACT! stands on Windows. It shows one contact database
// and serves it to the add-on on the session bus.

#include "common/Error.h"
#include "dbus/AutomationService.h"
#include "model/ContactHost.h"
#include "store/ContactStore.h"
#include "ui/ContactsWindow.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <cstdio>
#include <optional>

using namespace corvalent;
using namespace corvalent::host;

namespace {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

const QString kOrganisation = QStringLiteral("Corvalent");
const QString kApplication = QStringLiteral("Corvalent Contacts");
const QString kLastDatabase = QStringLiteral("LastDatabase");

const char* const kUsage =
    "Usage: corvalent-contacts [FILE]\n"
    "       corvalent-contacts --sample FILE\n"
    "       corvalent-contacts --generate N FILE\n"
    "       corvalent-contacts --help\n"
    "\n"
    "Shows the contact database FILE (a .cvdb file) and serves it to the Corvalent add-on on the session bus.\n"
    "Without FILE it opens the database it showed last or, the first time, a fresh copy of the sample database,\n"
    "$XDG_DATA_HOME/corvalent-contacts/Sample.cvdb (~/.local/share when XDG_DATA_HOME is not set).\n"
    "\n"
    "  --sample FILE       writes the sample database (51 made-up contacts: My Record and fifty others) to FILE\n"
    "                      and exits\n"
    "  --generate N FILE   writes N generated contacts to FILE and exits\n"
    "  --help              shows this text and exits\n"
    "\n"
    "FILE of --sample and --generate must not exist yet: nothing is ever overwritten.\n"
    "One corvalent-contacts serves a session: while one runs, another prints\n"
    "\"corvalent-contacts is already running\" and exits with 1.\n"
    "\n"
    "Exit codes: 0 done, 1 failed (a message says why), 2 wrong command line.\n";

void say(const QString& text)
{
    std::fprintf(stderr, "corvalent-contacts: %s\n", qPrintable(text));
}

struct CommandLine {
    enum class Mode { Show, Sample, Generate, Help } mode = Mode::Show;
    QString file;
    qint64 count = 0;
};

// Read before any application object exists: --sample and --generate must work without a display.
std::optional<CommandLine> parse(int argc, char** argv)
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(QString::fromLocal8Bit(argv[i]));
    CommandLine line;
    const auto wrong = [](const QString& why) -> std::optional<CommandLine> {
        say(why + QStringLiteral(" (corvalent-contacts --help tells more)"));
        return std::nullopt;
    };
    if (args.isEmpty())
        return line;
    const QString first = args.first();
    if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
        if (args.size() != 1)
            return wrong(QStringLiteral("--help takes nothing more"));
        line.mode = CommandLine::Mode::Help;
        return line;
    }
    if (first == QLatin1String("--sample")) {
        if (args.size() != 2 || args.at(1).isEmpty())
            return wrong(QStringLiteral("--sample takes one file name"));
        line.mode = CommandLine::Mode::Sample;
        line.file = args.at(1);
        return line;
    }
    if (first == QLatin1String("--generate")) {
        if (args.size() != 3 || args.at(2).isEmpty())
            return wrong(QStringLiteral("--generate takes a number of contacts and a file name"));
        bool ok = false;
        line.count = args.at(1).toLongLong(&ok);
        if (!ok || line.count < 1)
            return wrong(QStringLiteral("\"%1\" is not a number of contacts (1 or more)").arg(args.at(1)));
        line.mode = CommandLine::Mode::Generate;
        line.file = args.at(2);
        return line;
    }
    // "--" lets a file whose name starts with "-" be opened.
    if (first == QLatin1String("--") && args.size() == 2) {
        line.file = args.at(1);
        return line;
    }
    if (first.startsWith(QLatin1Char('-')))
        return wrong(QStringLiteral("unknown option \"%1\"").arg(first));
    if (args.size() != 1)
        return wrong(QStringLiteral("one database at a time"));
    line.file = first;
    return line;
}

// A database written from nothing; an existing file is left as it is.
int writeDatabase(const CommandLine& line)
{
    if (QFileInfo::exists(line.file)) {
        say(QStringLiteral("\"%1\" already exists; nothing was written").arg(line.file));
        return kExitFailed;
    }
    try {
        if (line.mode == CommandLine::Mode::Sample)
            writeSampleDatabase(line.file);
        else
            writeGeneratedDatabase(line.file, line.count);
    } catch (const Error& e) {
        say(QStringLiteral("cannot write \"%1\": %2").arg(line.file, e.description()));
        return kExitFailed;
    }
    return kExitDone;
}

// The database to show when none is named: the last one shown, or the sample, written the first time.
QString defaultDatabase()
{
    const QString last = QSettings().value(kLastDatabase).toString();
    if (!last.isEmpty() && QFileInfo(last).isFile())
        return last;
    const QString folder = sampleDatabaseFolder();
    const QString sample = folder + QStringLiteral("/Sample.cvdb");
    if (!QFileInfo::exists(sample)) {
        if (!QDir().mkpath(folder))
            throw Error(ErrorNumber::PathNotFound, QStringLiteral("Cannot make the folder \"%1\"").arg(folder));
        writeSampleDatabase(sample);
    }
    return sample;
}

void rememberDatabase(const QString& path)
{
    QSettings().setValue(kLastDatabase, QFileInfo(path).absoluteFilePath());
}

int show(const CommandLine& line, int& argc, char** argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(kOrganisation);
    QCoreApplication::setApplicationName(kApplication);

    ContactHost host;
    // The name is taken before the database is opened, but calls are answered only once the event loop runs,
    // by which time the database is open: a client that sees the name can read contacts at once.
    AutomationService service([&host](const QString& progId) { return host.createObject(progId); }, &host);
    switch (service.start()) {
    case AutomationService::Start::Serving:
        break;
    case AutomationService::Start::AlreadyRunning:
        say(QStringLiteral("corvalent-contacts is already running"));
        return kExitFailed;
    case AutomationService::Start::Failed:
        say(service.errorString());
        return kExitFailed;
    }

    QString path = line.file;
    try {
        if (path.isEmpty())
            path = defaultDatabase();
        host.openDatabase(path);
    } catch (const Error& e) {
        say(QStringLiteral("cannot open \"%1\": %2").arg(path, e.description()));
        return kExitFailed;
    }
    rememberDatabase(path);
    QObject::connect(&host, &ContactHost::databaseOpened, &rememberDatabase);

    // The window tells the host that the user wants to close (OnActUserWantsToClose) and closes itself on
    // Command 150; the program ends with it. The service goes before the host: releasing the name waits for the
    // bus, so every answer and event already sent reaches its client.
    ContactsWindow window(host);
    window.show();
    return app.exec();
}

} // namespace

int main(int argc, char** argv)
{
    const std::optional<CommandLine> line = parse(argc, argv);
    if (!line)
        return kExitUsage;
    switch (line->mode) {
    case CommandLine::Mode::Help:
        std::fputs(kUsage, stdout);
        return kExitDone;
    case CommandLine::Mode::Sample:
    case CommandLine::Mode::Generate: {
        QCoreApplication app(argc, argv); // the SQL driver is a plug-in
        return writeDatabase(*line);
    }
    case CommandLine::Mode::Show:
        break;
    }
    return show(*line, argc, argv);
}
