#include "services/ServiceCatalogue.h"

#include "common/Error.h"
#include "services/ServiceDefinition.h"

#include <QDir>
#include <QFileInfo>

namespace corvalent {

bool FolderFileExists(const QString& path)
{
    return !path.isEmpty() && QFileInfo::exists(path);
}

QString FileExtension(const QString& fileName, std::source_location at)
{
    const qsizetype dot = fileName.indexOf(QLatin1Char('.'));
    if (dot < 0)
        throw Error(ErrorNumber::InvalidArgument, at);
    return fileName.mid(dot);
}

QString FileStem(const QString& path)
{
    qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
#ifdef Q_OS_WIN
    slash = std::max(slash, path.lastIndexOf(QLatin1Char('\\')));
#endif
    return path.mid(slash + 1).remove(QStringLiteral(".isf"), Qt::CaseSensitive);
}

QStringList ListServiceFiles(const QString& folder, std::source_location at)
{
    QStringList names;
    if (!FolderFileExists(folder))
        return names;
    const QDir dir(folder);
    const QStringList files = dir.entryList(QDir::Files | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QString& file : files) {
        if (FileExtension(file, at) == QLatin1String(".isf"))
            names << FileStem(file);
    }
    return names;
}

QStringList ServiceListEntries(const QString& presetsFolder, bool addBlank, std::source_location at)
{
    QStringList entries;
    if (addBlank)
        entries << QString();
    if (FolderFileExists(presetsFolder)) {
        for (const QString& stored : ListServiceFiles(presetsFolder, at))
            entries << DisplayName(stored);
    }
    return entries;
}

} // namespace corvalent
