#include "common/ProgramFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>

namespace corvalent::ProgramFolder {

namespace {

QString configuredPath()
{
    const QString home = qEnvironmentVariable("CORVALENT_HOME");
    if (!home.isEmpty())
        return QDir::cleanPath(home);
#ifdef Q_OS_WIN
    return QCoreApplication::applicationDirPath();
#else
    QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    if (dataHome.isEmpty())
        dataHome = QDir::homePath() + QStringLiteral("/.local/share");
    return QDir::cleanPath(dataHome + QStringLiteral("/corvalent"));
#endif
}

bool isMissingOrEmpty(const QString& folder)
{
    const QDir dir(folder);
    return !dir.exists() || dir.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
}

// A copy keeps the installed file's read-only bits; the user's copy must be theirs to edit.
bool copyAsOwn(const QString& from, const QString& to)
{
    if (!QDir().mkpath(QFileInfo(to).absolutePath()) || !QFile::copy(from, to))
        return false;
    QFile::setPermissions(to, QFile::permissions(to) | QFile::WriteOwner | QFile::ReadOwner);
    return true;
}

// What a program folder holds: settings and country files, services, the manual. The source tree's data/ also
// holds the desktop's files (menu entries, the database file type, icons) and the contact manager's phone masks,
// which belong in the freedesktop data folders and the contact manager's own.
bool belongsInProgramFolder(const QString& relative)
{
    if (relative.startsWith(QStringLiteral("Presets/")))
        return relative.endsWith(QStringLiteral(".isf")) && !relative.mid(8).contains(QLatin1Char('/'));
    if (relative.contains(QLatin1Char('/')))
        return false;
    return relative.endsWith(QStringLiteral(".ini")) || relative.startsWith(QStringLiteral("Corvalent_manual."));
}

} // namespace

QString join(const QString& folder, const QString& name)
{
    if (folder.endsWith(QDir::separator()) || folder.endsWith(QLatin1Char('/')))
        return folder + name;
    return folder + QDir::separator() + name;
}

// A program that runs from the build tree belongs to that tree's data, even when another build is installed; an
// installed program finds its data beside it wherever the installation was unpacked.
QString seedSource()
{
    QStringList candidates;
    if (QCoreApplication::instance()) {
        const QString programDir = QCoreApplication::applicationDirPath();
        if (programDir.startsWith(QStringLiteral(CORVALENT_BUILD_ROOT "/")))
            candidates << QStringLiteral(CORVALENT_STAGED_DATADIR);
        candidates << programDir + QStringLiteral("/../share/corvalent");
    }
    candidates << QStringLiteral(CORVALENT_INSTALL_DATADIR) << QStringLiteral(CORVALENT_SOURCE_DATADIR);
    for (const QString& candidate : candidates) {
        if (QFileInfo::exists(candidate + QStringLiteral("/Settings.ini")))
            return QDir::cleanPath(candidate);
    }
    return QString();
}

bool seed(const QString& target, const QString& source)
{
    if (!QDir().mkpath(target))
        return false;
    bool ok = true;
    QDirIterator it(source, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString from = it.next();
        const QString relative = QDir(source).relativeFilePath(from);
        if (!belongsInProgramFolder(relative))
            continue;
        const QString to = join(target, relative);
        if (QFileInfo::exists(to))
            continue;
        ok = copyAsOwn(from, to) && ok;
    }
    return ok;
}

QString path()
{
    static QSet<QString> seeded;
    const QString folder = configuredPath();
    if (!seeded.contains(folder)) {
        seeded.insert(folder);
        if (isMissingOrEmpty(folder)) {
            const QString source = seedSource();
            if (source.isEmpty())
                QDir().mkpath(folder);
            else
                seed(folder, source);
        }
    }
    return folder;
}

QString provide(const QString& name, const QString& source)
{
    const QString own = join(path(), name);
    if (QFileInfo::exists(own))
        return own;
    const QString installed = source.isEmpty() ? QString() : join(source, name);
    if (installed.isEmpty() || !QFileInfo::exists(installed))
        return QString();
    return copyAsOwn(installed, own) ? own : installed;
}

} // namespace corvalent::ProgramFolder
