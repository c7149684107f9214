#include "common/Launcher.h"

#include <QFile>
#include <QProcess>

#ifdef Q_OS_LINUX
#include <spawn.h>
#include <sys/wait.h>
extern char** environ;
#endif

namespace corvalent {

namespace {

std::unique_ptr<Launcher>& installed()
{
    static std::unique_ptr<Launcher> launcher;
    return launcher;
}

} // namespace

Launcher& Launcher::instance()
{
    auto& launcher = installed();
    if (!launcher)
        launcher = std::make_unique<DesktopLauncher>();
    return *launcher;
}

void Launcher::install(std::unique_ptr<Launcher> launcher)
{
    installed() = std::move(launcher);
}

QString DesktopLauncher::opener()
{
    const QString custom = qEnvironmentVariable("CORVALENT_OPENER");
    return custom.isEmpty() ? QStringLiteral("xdg-open") : custom;
}

bool DesktopLauncher::open(const QString& target, const QString& workingFolder)
{
#ifdef Q_OS_LINUX
    // An opener ends soon after it has handed the target on; until it is waited for it stays a zombie.
    m_children.removeIf([](qint64 child) { return waitpid(pid_t(child), nullptr, WNOHANG) != 0; });

    QByteArray program = QFile::encodeName(opener());
    QByteArray argument = QFile::encodeName(target);
    char* argv[] = {program.data(), argument.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const QByteArray folder = QFile::encodeName(workingFolder);
    if (!folder.isEmpty())
        posix_spawn_file_actions_addchdir_np(&actions, folder.constData());
    // A session of its own, as a detached program has: the browser it starts outlives the add-on's terminal.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t child = 0;
    const int failed = posix_spawnp(&child, program.constData(), &actions, &attributes, argv, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (failed)
        return false;
    m_children.append(child);
    return true;
#else
    return QProcess::startDetached(opener(), {target}, workingFolder);
#endif
}

bool RecordingLauncher::open(const QString& target, const QString& workingFolder)
{
    m_opened.append({target, workingFolder});
    if (onOpen)
        onOpen(target);
    return true;
}

} // namespace corvalent
