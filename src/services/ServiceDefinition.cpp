#include "services/ServiceDefinition.h"

#include "common/Error.h"
#include "common/ProgramFolder.h"
#include "common/VbRuntime.h"
#include "services/IniCache.h"
#include "services/IniLib.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace corvalent {

namespace {

bool writeKeys(const QString& path, const ServiceDefinition& s)
{
    bool ok = true;
    auto write = [&](const QString& key, const QString& value) {
        ok = WriteKeyValue(kServiceSection, key, value, path) && ok;
    };
    write(QStringLiteral("Name"), StoredName(s.name));
    write(QStringLiteral("URL"), s.url);
    if (s.base >= ServiceBase::Address && s.base <= ServiceBase::Other)
        write(QStringLiteral("Base"), QString::number(s.base));
    write(QStringLiteral("CountryFile"), s.countryFile);
    write(QStringLiteral("DefaultCountry"), s.defaultCountry);
    for (int row = 0; row < kFieldRows; ++row) {
        write(QStringLiteral("F%1").arg(row), QString::number(s.fields[row]));
        if (s.fields[row] == FieldCode::PhoneNumbers)
            write(QStringLiteral("PhFormat%1").arg(row), s.phoneFormats[row]);
    }
    for (int row = 0; row < kFieldRows; ++row)
        write(QStringLiteral("V%1").arg(row), s.variables[row]);
    for (int i = 0; i < kCustomRows; ++i)
        write(QStringLiteral("L%1").arg(i + 7), s.labels[i]);
    return ok;
}

} // namespace

QString ServiceSetting(const QString& serviceFile, const QString& key, const QString& fallback)
{
    return GetKeyValue(kServiceSection, key, fallback, QString(), QString(), serviceFile);
}

QString StoredName(const QString& displayName)
{
    return QString(displayName).replace(QLatin1Char('.'), QLatin1Char('~'));
}

QString DisplayName(const QString& storedName)
{
    return QString(storedName).replace(QLatin1Char('~'), QLatin1Char('.'));
}

QString ServiceFilePath(const QString& presetsFolder, const QString& displayName)
{
    return ProgramFolder::join(presetsFolder, StoredName(displayName) + QStringLiteral(".isf"));
}

ServiceDefinition ReadServiceDefinition(const QString& path)
{
    ServiceDefinition s;
    s.name = DisplayName(ServiceSetting(path, QStringLiteral("Name")));
    s.url = ServiceSetting(path, QStringLiteral("URL"));
    const QString base = ServiceSetting(path, QStringLiteral("Base"));
    s.base = IsNumeric(base) ? int(Val(base)) : ServiceBase::None;
    s.countryFile = ServiceSetting(path, QStringLiteral("CountryFile"));
    s.defaultCountry = ServiceSetting(path, QStringLiteral("DefaultCountry"), QStringLiteral("US"));
    for (int row = 0; row < kFieldRows; ++row) {
        s.fields[row] = int(Val(ServiceSetting(path, QStringLiteral("F%1").arg(row), QStringLiteral("0"))));
        s.phoneFormats[row] = ServiceSetting(path, QStringLiteral("PhFormat%1").arg(row));
        s.variables[row] = ServiceSetting(path, QStringLiteral("V%1").arg(row));
    }
    for (int i = 0; i < kCustomRows; ++i)
        s.labels[i] = ServiceSetting(path, QStringLiteral("L%1").arg(i + 7));
    return s;
}

bool WriteNewService(const QString& path, const ServiceDefinition& service)
{
    {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write("[Settings]\r\n");
        if (!file.commit())
            return false;
    }
    IniCache::instance().invalidate(path);
    return writeKeys(path, service);
}

bool SaveEditedService(QString& path, const ServiceDefinition& service, std::source_location at)
{
    const QString oldName = ServiceSetting(path, QStringLiteral("Name"));
    const QString newName = StoredName(service.name);
    if (!oldName.isEmpty() && oldName != newName) {
        // The new file name is the old one with the old name replaced by the new: only the file's own name is
        // touched, never the folders above it.
        const QFileInfo info(path);
        const QString renamed = ProgramFolder::join(info.path(), info.fileName().replace(oldName, newName));
        if (renamed != path) {
            if (QFileInfo::exists(renamed))
                throw Error(58, QStringLiteral("File already exists"), at);
            if (!QFile::copy(path, renamed))
                throw Error(ErrorNumber::PermissionDenied, at);
            QFile::remove(path); // a file left behind is harmless; the copy is what counts
            IniCache::instance().invalidate(path);
            path = renamed;
        }
    }
    return writeKeys(path, service);
}

} // namespace corvalent
