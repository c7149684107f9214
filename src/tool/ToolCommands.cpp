#include "tool/ToolCommands.h"

#include "act/ActSession.h"
#include "act/ContactCapture.h"
#include "act/ContactForm.h"
#include "act/DBusBackend.h"
#include "common/Error.h"
#include "common/ProgramFolder.h"
#include "common/Windows1252.h"
#include "download/InstalledServices.h"
#include "download/ServiceServer.h"
#include "prefs/SettingsFile.h"
#include "request/Go.h"
#include "request/PostPage.h"
#include "services/IniLib.h"
#include "services/ServiceCatalogue.h"
#include "services/ServiceDefinition.h"

#include <QEventLoop>
#include <QFileInfo>

#include <cstdio>
#include <functional>
#include <optional>

namespace corvalent::tool {

namespace {

// Splits "--name value" options from positional arguments. Answers nullopt (after saying why) on an unknown
// option or one without its value; the caller then shows its usage line, as for any other wrong command line.
struct Parsed {
    QStringList positional;
    QList<std::pair<QString, QString>> options;
    QStringList flags; // options without a value that were given
    std::optional<QString> option(const QString& name) const
    {
        for (const auto& [n, v] : options) {
            if (n == name)
                return v;
        }
        return std::nullopt;
    }
};

std::optional<Parsed> parse(const QStringList& args, const QStringList& known, Output io,
                            const QStringList& knownFlags = {})
{
    Parsed parsed;
    for (int i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        if (arg == QLatin1String("--")) {
            parsed.positional << args.mid(i + 1);
            break;
        }
        if (arg.startsWith(QLatin1String("--"))) {
            const QString name = arg.mid(2);
            if (knownFlags.contains(name)) {
                parsed.flags << name;
                continue;
            }
            if (!known.contains(name)) {
                io.err << "corvalent-tool: unknown option " << arg << "\n";
                return std::nullopt;
            }
            if (i + 1 >= args.size()) {
                io.err << "corvalent-tool: option " << arg << " needs a value\n";
                return std::nullopt;
            }
            parsed.options.append({name, args.at(++i)});
            continue;
        }
        parsed.positional << arg;
    }
    return parsed;
}

int wrongArguments(Output io, const char* synopsis)
{
    io.err << "corvalent-tool: usage: corvalent-tool " << synopsis << "\n";
    return kUsage;
}

// A service named on the command line: a file path as given, or a service of the Presets folder by its file name
// or its display name.
QString findService(const QString& name)
{
    if (QFileInfo(name).isFile())
        return name;
    if (name.contains(QLatin1Char('/')))
        return QString();
    const QString folder = PresetsDir();
    for (const QString& candidate : {name, name + QStringLiteral(".isf"), StoredName(name) + QStringLiteral(".isf")}) {
        const QString path = ProgramFolder::join(folder, candidate);
        if (QFileInfo(path).isFile())
            return path;
    }
    return QString();
}

// One slot per line: a text must not break the line or add a column.
QString escapedText(const QString& text)
{
    QString escaped;
    for (QChar c : text) {
        switch (c.unicode()) {
        case '\\': escaped += QStringLiteral("\\\\"); break;
        case '\t': escaped += QStringLiteral("\\t"); break;
        case '\n': escaped += QStringLiteral("\\n"); break;
        case '\r': escaped += QStringLiteral("\\r"); break;
        default: escaped += c;
        }
    }
    return escaped;
}

} // namespace

QString usage()
{
    return QStringLiteral(
        "Usage:\n"
        "  corvalent-tool ini get SECTION KEY [--default D] [--type T] [--fail F] FILE\n"
        "  corvalent-tool ini set SECTION KEY VALUE FILE\n"
        "  corvalent-tool request SERVICE [--field N=TEXT]...\n"
        "  corvalent-tool services [FOLDER]\n"
        "  corvalent-tool capture SERVICE [--option business|home|custom] [--phone FIELD]\n"
        "  corvalent-tool download list [--server URL]\n"
        "  corvalent-tool download get NAME... [--server URL] [--replace]\n"
        "  corvalent-tool download delete NAME...\n"
        "\n"
        "ini get/set   read or write one key with the program's own INI rules; FILE \"\" is Settings.ini\n"
        "request       print the address GO would open for SERVICE (a .isf file, or a service of the Presets\n"
        "              folder by name) with the field rows N (0-9) set to TEXT; for the postal lookup, print the\n"
        "              POST page instead; a service with Encoding=utf-8 gets its values percent-encoded as\n"
        "              UTF-8 (the POST page: quoted, escaped, in UTF-8), any other only accent-folded\n"
        "services      list the services of FOLDER (default: the Presets folder) by display name\n"
        "capture       read the current contact of the running contact manager as SERVICE's rows would, with the\n"
        "              address option (default business; custom when only --phone is given) and, for custom,\n"
        "              the phone field FIELD; prints per slot its number, \"grab\" or \"nograb\" and its text,\n"
        "              tab-separated, with \\, tabs and line breaks in the text written as \\\\, \\t, \\n, \\r\n"
        "download      list the services on the server (default: the ServicesServer preference), install\n"
        "              them into the Presets folder (an installed one only with --replace) or delete\n"
        "              installed ones; NAME is a service's display name or its file name\n"
        "\n"
        "Exit codes: 0 done, 1 failed (a message says why), 2 wrong command line.\n");
}

int iniGet(const QStringList& args, Output io)
{
    const char* synopsis = "ini get SECTION KEY [--default D] [--type T] [--fail F] FILE";
    const auto p = parse(args, {QStringLiteral("default"), QStringLiteral("type"), QStringLiteral("fail")}, io);
    if (!p || p->positional.size() != 3)
        return wrongArguments(io, synopsis);
    io.out << GetKeyValue(p->positional[0], p->positional[1], p->option(QStringLiteral("default")).value_or(QString()),
                          p->option(QStringLiteral("type")).value_or(QString()),
                          p->option(QStringLiteral("fail")).value_or(QString()), p->positional[2])
           << "\n";
    return kOk;
}

int iniSet(const QStringList& args, Output io)
{
    const char* synopsis = "ini set SECTION KEY VALUE FILE";
    const auto p = parse(args, {}, io);
    if (!p || p->positional.size() != 4)
        return wrongArguments(io, synopsis);
    QString file = p->positional[3];
    const QString& value = p->positional[2];
    if (value.contains(QLatin1Char('\n')) || value.contains(QLatin1Char('\r'))) {
        io.err << "corvalent-tool: a value cannot hold a line break\n";
        return kFailed;
    }
    if (!WriteKeyValue(p->positional[0], p->positional[1], value, file)) {
        io.err << "corvalent-tool: could not write " << file << "\n";
        return kFailed;
    }
    return kOk;
}

int request(const QStringList& args, Output io)
{
    const char* synopsis = "request SERVICE [--field N=TEXT]...";
    const auto p = parse(args, {QStringLiteral("field")}, io);
    if (!p || p->positional.size() != 1)
        return wrongArguments(io, synopsis);

    FieldTexts fields;
    for (const auto& [name, value] : p->options) {
        const qsizetype eq = value.indexOf(QLatin1Char('='));
        bool ok = false;
        const int row = eq > 0 ? value.left(eq).toInt(&ok) : -1;
        if (!ok || row < 0 || row >= kFieldRows) {
            io.err << "corvalent-tool: --field wants N=TEXT with N from 0 to 9, not \"" << value << "\"\n";
            return wrongArguments(io, synopsis);
        }
        fields[row] = value.mid(eq + 1);
    }

    const QString service = findService(p->positional[0]);
    if (service.isEmpty()) {
        io.err << "corvalent-tool: no service file " << p->positional[0] << " (looked in " << PresetsDir() << ")\n";
        return kFailed;
    }

    const GoPlan plan = PlanGo(service, fields);
    switch (plan.kind) {
    case GoPlan::Kind::Get:
        io.out << plan.address << "\n";
        return kOk;
    case GoPlan::Kind::Post:
        // The page exactly as it would be written: its own code page and line breaks.
        io.out.flush();
        {
            const QByteArray page = PostPageContent(service, fields);
            std::fwrite(page.constData(), 1, size_t(page.size()), stdout);
        }
        return kOk;
    case GoPlan::Kind::NoUrl:
        io.err << kNoUrlMessage << "\n";
        return kFailed;
    case GoPlan::Kind::MissingCountryFile:
        io.err << kMissingCountryFileMessage << " (" << ProgramFolder::join(ProgramFolder::path(), plan.countryFilePath)
               << ")\n";
        return kFailed;
    }
    return kFailed;
}

int services(const QStringList& args, Output io)
{
    const char* synopsis = "services [FOLDER]";
    const auto p = parse(args, {}, io);
    if (!p || p->positional.size() > 1)
        return wrongArguments(io, synopsis);
    const QString folder = p->positional.isEmpty() ? PresetsDir() : p->positional[0];
    if (!FolderFileExists(folder)) {
        io.err << "corvalent-tool: no folder " << folder << "\n";
        return kFailed;
    }
    for (const QString& name : ServiceListEntries(folder, false))
        io.out << name << "\n";
    return kOk;
}

int capture(const QStringList& args, Output io)
{
    const char* synopsis = "capture SERVICE [--option business|home|custom] [--phone FIELD]";
    const auto p = parse(args, {QStringLiteral("option"), QStringLiteral("phone")}, io);
    if (!p || p->positional.size() != 1)
        return wrongArguments(io, synopsis);

    const QStringList options{QStringLiteral("business"), QStringLiteral("home"), QStringLiteral("custom")};
    const auto phoneArg = p->option(QStringLiteral("phone"));
    // Choosing a phone in the window selects the custom option; the command line does the same.
    const QString optionName = p->option(QStringLiteral("option"))
                                   .value_or(phoneArg ? QStringLiteral("custom") : QStringLiteral("business"));
    const int option = int(options.indexOf(optionName));
    if (option < 0) {
        io.err << "corvalent-tool: --option is business, home or custom, not \"" << optionName << "\"\n";
        return wrongArguments(io, synopsis);
    }
    bool phoneOk = true;
    const qint32 phoneField = phoneArg ? phoneArg->toInt(&phoneOk) : 0;
    if (!phoneOk) {
        io.err << "corvalent-tool: --phone wants a field ID, not \"" << *phoneArg << "\"\n";
        return wrongArguments(io, synopsis);
    }

    const QString service = findService(p->positional[0]);
    if (service.isEmpty()) {
        io.err << "corvalent-tool: no service file " << p->positional[0] << " (looked in " << PresetsDir() << ")\n";
        return kFailed;
    }

    DBusBackend backend;
    ActSession session;
    try {
        session.attachEvents(backend);
        if (!session.isDatabaseOpen()) {
            io.err << "corvalent-tool: the contact manager has no database open\n";
            return kFailed;
        }
        session.OpenSession(backend);
        constexpr qint32 kPhoneType = 14;
        if (phoneArg && session.fieldType(QString::number(phoneField)) != kPhoneType) {
            io.err << "corvalent-tool: field " << phoneField << " is not a phone field\n";
            return kFailed;
        }
    } catch (const Error& e) {
        if (e.number() == ErrorNumber::CannotCreateObject)
            io.err << "corvalent-tool: the contact manager is not running (start corvalent-contacts)\n";
        else
            io.err << "corvalent-tool: the contact manager cannot be used: Error " << e.number() << ": "
                   << e.description() << "\n";
        return kFailed;
    }

    ContactForm form;
    form.setAddressOption(option);
    if (phoneArg)
        form.setPhones({{QStringLiteral("[%1]").arg(session.label(QString::number(phoneField))), phoneField}}, 0);
    ContactCapture capture(session, form);
    capture.setServiceFile(service);
    // The error box has been printed by the capture's own trap when it did not run to its end.
    if (!capture.Get_Contact(false))
        return kFailed;
    for (int slot = 0; slot < ContactForm::kSlots; ++slot) {
        io.out << slot << '\t' << (form.grabEnabled(slot) ? "grab" : "nograb") << '\t' << escapedText(form.text(slot))
               << '\n';
    }
    return kOk;
}

} // namespace corvalent::tool

namespace corvalent::tool {

namespace {

// What one request to the server brought.
struct ServerAnswer {
    ServerListing listing;
    QByteArray bytes;
    std::optional<ServerFailure> failure;
};

// Runs one request to its end. The tool has no window to keep responsive, so a local event loop waits for it;
// the request's own time-outs bound the wait.
ServerAnswer await(ServiceServer& server, const std::function<void()>& start)
{
    ServerAnswer answer;
    QEventLoop loop;
    QObject::connect(&server, &ServiceServer::listed, &loop, [&](const ServerListing& listing) {
        answer.listing = listing;
        loop.quit();
    });
    QObject::connect(&server, &ServiceServer::fetched, &loop, [&](const QString&, const QByteArray& bytes) {
        answer.bytes = bytes;
        loop.quit();
    });
    QObject::connect(&server, &ServiceServer::failed, &loop, [&](const ServerFailure& failure) {
        answer.failure = failure;
        loop.quit();
    });
    start();
    loop.exec();
    return answer;
}

void printFailure(const ServerFailure& failure, Output io)
{
    io.err << "corvalent-tool: " << failure.function << " Err: " << failure.text;
    if (failure.responseCode > 0)
        io.err << " (the server said: " << failure.responseCode << ' ' << failure.responseText << ")";
    io.err << "\n";
}

// A service named on the command line by its display name or its file name, as its shown name; "" when the
// name is a path or cannot be a file of the Presets folder, not even when its last part would be one.
QString shownName(const QString& name)
{
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')))
        return QString();
    const QString shown = name.endsWith(QLatin1String(".isf")) ? DisplayName(FileStem(name)) : name;
    return IsPlainName(ServiceFileName(shown)) ? shown : QString();
}

// Runs `one` for each service named on the command line, all of them even when some fail; answers kFailed
// when a name was no service name or `one` failed for it.
int forEachService(const QStringList& names, Output io, const std::function<bool(const QString& shown)>& one)
{
    bool failed = false;
    for (const QString& name : names) {
        const QString shown = shownName(name);
        if (shown.isEmpty())
            io.err << "corvalent-tool: \"" << name << "\" is not a service name\n";
        if (shown.isEmpty() || !one(shown))
            failed = true;
    }
    return failed ? kFailed : kOk;
}

int downloadList(ServiceServer& server, Output io)
{
    const ServerAnswer answer = await(server, [&] { server.list(); });
    if (answer.failure) {
        printFailure(*answer.failure, io);
        return kFailed;
    }
    for (const QString& name : ShownServiceNames(answer.listing.names))
        io.out << name << "\n";
    if (answer.listing.ignored > 0)
        io.err << "corvalent-tool: " << answer.listing.ignored
               << " name(s) on the server ignored: not plain file names\n";
    if (answer.listing.names.isEmpty() && answer.listing.ignored == 0)
        io.err << "corvalent-tool: This directory is empty!\n";
    return kOk;
}

int downloadGet(ServiceServer& server, const QStringList& names, bool replace, Output io)
{
    const QString presets = PresetsDir();
    return forEachService(names, io, [&](const QString& shown) {
        if (!replace && FolderFileExists(ServiceFilePath(presets, shown))) {
            io.err << "corvalent-tool: " << shown << " is installed already and was left as it is (--replace "
                   << "replaces it)\n";
            return true;
        }
        const QString fileName = ServiceFileName(shown);
        const ServerAnswer answer = await(server, [&] { server.fetch(fileName); });
        if (answer.failure) {
            printFailure(*answer.failure, io);
            return false;
        }
        if (const QString problem = InstallServiceFile(presets, fileName, answer.bytes); !problem.isEmpty()) {
            io.err << "corvalent-tool: " << problem << "\n";
            return false;
        }
        io.out << "installed " << shown << "\n";
        return true;
    });
}

int downloadDelete(const QStringList& names, Output io)
{
    const QString presets = PresetsDir();
    return forEachService(names, io, [&](const QString& shown) {
        if (!DeleteInstalledService(presets, shown)) {
            io.err << "corvalent-tool: could not delete " << shown << " (looked for "
                   << ServiceFilePath(presets, shown) << ")\n";
            return false;
        }
        io.out << "deleted " << shown << "\n";
        return true;
    });
}

} // namespace

int download(const QStringList& args, Output io)
{
    const char* synopsis = "download list [--server URL] | get NAME... [--server URL] [--replace] | delete NAME...";
    const QString command = args.value(0);
    if (command == QLatin1String("delete")) {
        const auto p = parse(args.mid(1), {}, io);
        if (!p || p->positional.isEmpty())
            return wrongArguments(io, synopsis);
        return downloadDelete(p->positional, io);
    }
    const bool get = command == QLatin1String("get");
    if (!get && command != QLatin1String("list"))
        return wrongArguments(io, synopsis);
    const auto p = parse(args.mid(1), {QStringLiteral("server")}, io,
                         get ? QStringList{QStringLiteral("replace")} : QStringList());
    if (!p || (get ? p->positional.isEmpty() : !p->positional.isEmpty()))
        return wrongArguments(io, synopsis);
    ServiceServer server(p->option(QStringLiteral("server")).value_or(ServicesServer()));
    return get ? downloadGet(server, p->positional, p->flags.contains(QStringLiteral("replace")), io)
               : downloadList(server, io);
}

} // namespace corvalent::tool
