#include "common/ErrorTrap.h"
#include "common/Prompter.h"
#include "prefs/SettingsFile.h"
#include "services/IniLib.h"
#include "tool/ToolCommands.h"

#include <QCoreApplication>

#include <cstdio>

using namespace corvalent;

namespace {

// Prints every message to standard error like the console prompter, and remembers that an error was shown so the
// tool can exit non-zero.
class ToolPrompter : public ConsolePrompter {
public:
    int message(const QString& text, int style, const QString& caption) override
    {
        if (Prompter::effectiveCaption(caption) == errorCaption())
            errors = true;
        return ConsolePrompter::message(text, style, caption);
    }
    bool errors = false;
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvalent-tool"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVALENT_VERSION));

    auto prompter = std::make_unique<ToolPrompter>();
    ToolPrompter* shown = prompter.get();
    Prompter::install(std::move(prompter));

    QTextStream out(stdout);
    QTextStream err(stderr);
    const tool::Output io{out, err};

    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty() || args[0] == QLatin1String("--help") || args[0] == QLatin1String("-h")
        || args[0] == QLatin1String("help")) {
        (args.isEmpty() ? err : out) << tool::usage();
        return args.isEmpty() ? tool::kUsage : tool::kOk;
    }
    if (args[0] == QLatin1String("--version")) {
        out << "corvalent-tool " << CORVALENT_VERSION << "\n";
        return tool::kOk;
    }

    SetIniSettingsFile(SettingsFilePath());

    const QString command = args[0];
    // Library errors that a window would catch in its own trap (a Presets file without an extension, say) end the
    // command with the same error text instead of an abort.
    int code = trapped(QStringLiteral("corvalent-tool: Sub ") + command, int(tool::kFailed), [&] {
        if (command == QLatin1String("ini") && args.size() >= 2 && args[1] == QLatin1String("get"))
            return tool::iniGet(args.mid(2), io);
        if (command == QLatin1String("ini") && args.size() >= 2 && args[1] == QLatin1String("set"))
            return tool::iniSet(args.mid(2), io);
        if (command == QLatin1String("request"))
            return tool::request(args.mid(1), io);
        if (command == QLatin1String("services"))
            return tool::services(args.mid(1), io);
        if (command == QLatin1String("capture"))
            return tool::capture(args.mid(1), io);
        if (command == QLatin1String("download"))
            return tool::download(args.mid(1), io);
        err << "corvalent-tool: unknown command \"" << args.join(QLatin1Char(' ')) << "\"\n\n" << tool::usage();
        return int(tool::kUsage);
    });

    out.flush();
    err.flush();
    if (code == tool::kOk && shown->errors)
        code = tool::kFailed;
    return code;
}
