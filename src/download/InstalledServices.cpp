#include "download/InstalledServices.h"

#include "common/ProgramFolder.h"
#include "download/ServerListing.h"
#include "services/IniCache.h"
#include "services/ServiceDefinition.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace corvalent {

QString InstallServiceFile(const QString& presetsFolder, const QString& fileName, const QByteArray& bytes)
{
    if (!IsPlainName(fileName))
        return QStringLiteral("\"%1\" is not a plain file name").arg(fileName);
    if (!QDir().mkpath(presetsFolder))
        return QStringLiteral("Cannot create the folder %1").arg(presetsFolder);
    const QString path = ProgramFolder::join(presetsFolder, fileName);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return QStringLiteral("Cannot write %1: %2").arg(path, file.errorString());
    IniCache::instance().invalidate(path);
    return QString();
}

bool DeleteInstalledService(const QString& presetsFolder, const QString& shownName)
{
    if (!IsPlainName(ServiceFileName(shownName)))
        return false;
    const QString path = ServiceFilePath(presetsFolder, shownName);
    const bool removed = QFile::remove(path);
    IniCache::instance().invalidate(path);
    return removed;
}

} // namespace corvalent
