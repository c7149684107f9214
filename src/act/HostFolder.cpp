#include "act/HostFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace corvalent {

namespace {

const QString kDatabaseMimeType = QStringLiteral("application/x-corvalent-contacts");
const QString kPhoneFormatFile = QStringLiteral("Phone.fmt");

// xdg-mime is a shell script that may consult the desktop's own tools; it must not freeze the window for long.
constexpr int kAskTimeoutMs = 5000;

QString desktopIdOfDatabases()
{
    const QString xdgMime = QStandardPaths::findExecutable(QStringLiteral("xdg-mime"));
    if (xdgMime.isEmpty())
        return QString();
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(xdgMime, {QStringLiteral("query"), QStringLiteral("default"), kDatabaseMimeType});
    if (!process.waitForFinished(kAskTimeoutMs)) {
        process.kill();
        process.waitForFinished();
        return QString();
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return QString();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).section(QLatin1Char('\n'), 0, 0).trimmed();
}

QStringList dataFolders()
{
    QString home = qEnvironmentVariable("XDG_DATA_HOME");
    if (home.isEmpty())
        home = QDir::homePath() + QStringLiteral("/.local/share");
    QString dirs = qEnvironmentVariable("XDG_DATA_DIRS");
    if (dirs.isEmpty())
        dirs = QStringLiteral("/usr/local/share:/usr/share");
    return QStringList{home} + dirs.split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

// A desktop file ID names "applications/a/b.desktop" as "a-b.desktop"; each "-" may stand for a folder.
QStringList relativeNames(const QString& desktopId)
{
    QStringList names{desktopId};
    for (qsizetype dash = desktopId.indexOf(QLatin1Char('-')); dash > 0;
         dash = desktopId.indexOf(QLatin1Char('-'), dash + 1)) {
        QString name = desktopId;
        name[dash] = QLatin1Char('/');
        names << name;
    }
    return names;
}

QString desktopFilePath(const QString& desktopId)
{
    if (desktopId.isEmpty() || desktopId.contains(QStringLiteral("..")) || desktopId.startsWith(QLatin1Char('/')))
        return QString();
    for (const QString& folder : dataFolders()) {
        for (const QString& name : relativeNames(desktopId)) {
            const QString path = folder + QStringLiteral("/applications/") + name;
            if (QFileInfo(path).isFile())
                return path;
        }
    }
    return QString();
}

// The Exec value of the [Desktop Entry] group.
QString execLine(const QString& desktopFile)
{
    QFile file(desktopFile);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    bool inEntry = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        if (!inEntry)
            continue;
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (eq > 0 && line.left(eq).trimmed() == QLatin1String("Exec"))
            return line.mid(eq + 1).trimmed();
    }
    return QString();
}

// The first word of an Exec value: quoted with "..." (backslash escapes inside) or up to the first blank.
QString firstWord(const QString& exec)
{
    QString word;
    if (exec.startsWith(QLatin1Char('"'))) {
        for (qsizetype i = 1; i < exec.size(); ++i) {
            const QChar c = exec.at(i);
            if (c == QLatin1Char('\\') && i + 1 < exec.size()) {
                word.append(exec.at(++i));
                continue;
            }
            if (c == QLatin1Char('"'))
                return word;
            word.append(c);
        }
        return QString(); // an unclosed quote starts nothing
    }
    for (QChar c : exec) {
        if (c.isSpace())
            break;
        word.append(c);
    }
    return word;
}

QString programPath(const QString& desktopFile)
{
    const QString program = firstWord(execLine(desktopFile));
    if (program.isEmpty())
        return QString();
    if (QDir::isAbsolutePath(program))
        return QFileInfo(program).isExecutable() ? program : QString();
    return QStandardPaths::findExecutable(program);
}

QString dataFolderOf(const QString& program)
{
    QStringList folders{QFileInfo(program).absolutePath()};
    // A program linked into bin/ from elsewhere keeps its data beside where it really is.
    const QString real = QFileInfo(program).canonicalFilePath();
    if (!real.isEmpty() && QFileInfo(real).absolutePath() != folders.first())
        folders << QFileInfo(real).absolutePath();
    for (const QString& folder : folders) {
        const QString shared = QDir::cleanPath(folder + QStringLiteral("/../share/corvalent-contacts"));
        if (QFileInfo(shared + QLatin1Char('/') + kPhoneFormatFile).isFile())
            return shared;
    }
    return folders.first();
}

} // namespace

QString FindHostFolder()
{
    const QString configured = qEnvironmentVariable("CORVALENT_CONTACTS_FOLDER");
    if (!configured.isEmpty())
        return QDir::cleanPath(configured);
    const QString desktopFile = desktopFilePath(desktopIdOfDatabases());
    if (desktopFile.isEmpty())
        return QString();
    const QString program = programPath(desktopFile);
    return program.isEmpty() ? QString() : dataFolderOf(program);
}

} // namespace corvalent
