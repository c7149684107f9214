#include "common/Launcher.h"

#include <QProcess>

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
    return QProcess::startDetached(opener(), {target}, workingFolder);
}

bool RecordingLauncher::open(const QString& target, const QString& workingFolder)
{
    m_opened.append({target, workingFolder});
    if (onOpen)
        onOpen(target);
    return true;
}

} // namespace corvalent
