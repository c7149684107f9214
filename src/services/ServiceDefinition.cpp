#include "services/ServiceDefinition.h"

#include "common/Error.h"
#include "common/ProgramFolder.h"
#include "common/VbRuntime.h"
#include "services/IniCache.h"
#include "services/IniLib.h"

#include <QFile>
#include <QFileInfo>

namespace corvalent {

namespace {

// Every key in the order the files have always had them.
IniKeys serviceKeys(const ServiceDefinition& s)
{
    IniKeys keys;
    auto add = [&](const QString& key, const QString& value) { keys.append({key, value}); };
    add(QStringLiteral("Name"), StoredName(s.name));
    add(QStringLiteral("URL"), s.url);
    if (s.base >= ServiceBase::Address && s.base <= ServiceBase::Other)
        add(QStringLiteral("Base"), QString::number(s.base));
    add(QStringLiteral("CountryFile"), s.countryFile);
    add(QStringLiteral("DefaultCountry"), s.defaultCountry);
    if (s.encoding)
        add(kEncodingKey, *s.encoding);
    for (int row = 0; row < kFieldRows; ++row) {
        if (!s.fields[row])
            continue;
        add(QStringLiteral("F%1").arg(row), QString::number(*s.fields[row]));
        if (*s.fields[row] == FieldCode::PhoneNumbers && s.phoneFormats[row])
            add(QStringLiteral("PhFormat%1").arg(row), *s.phoneFormats[row]);
    }
    for (int row = 0; row < kFieldRows; ++row)
        add(QStringLiteral("V%1").arg(row), s.variables[row]);
    for (int i = 0; i < kCustomRows; ++i)
        add(QStringLiteral("L%1").arg(i + 7), s.labels[i]);
    return keys;
}

} // namespace

QString ServiceSetting(const QString& serviceFile, const QString& key, const QString& fallback)
{
    return GetKeyValue(kServiceSection, key, fallback, QString(), QString(), serviceFile);
}

bool IsUtf8Encoding(const QString& value)
{
    return value.compare(kUtf8Encoding, Qt::CaseInsensitive) == 0;
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
    if (const QString encoding = ServiceSetting(path, kEncodingKey); !encoding.isEmpty())
        s.encoding = encoding;
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
    return WriteKeyValues(kServiceSection, serviceKeys(service), path, QByteArray("[Settings]\r\n"));
}

bool SaveEditedService(QString& path, const ServiceDefinition& service, std::source_location at)
{
    const QString oldName = ServiceSetting(path, QStringLiteral("Name"));
    const QString newName = StoredName(service.name);
    QString target = path;
    if (!oldName.isEmpty() && oldName != newName) {
        // Only the file's own name changes, never the folders above it. A file renamed by hand does not hold its
        // old name: it keeps its path and takes the new name inside.
        const QFileInfo info(path);
        target = ProgramFolder::join(info.path(), info.fileName().replace(oldName, newName));
    }
    if (target == path) {
        if (!WriteKeyValues(kServiceSection, serviceKeys(service), path))
            throw Error(ErrorNumber::PermissionDenied, at);
        return true;
    }
    // The new file is written whole before the old one goes, so that a crash leaves one complete service or
    // both, never a part of one.
    QFile old(path);
    if (!old.open(QIODevice::ReadOnly))
        throw Error(ErrorNumber::FileNotFound, at);
    const QByteArray oldBytes = old.readAll();
    old.close();
    if (!WriteKeyValues(kServiceSection, serviceKeys(service), target, oldBytes))
        throw Error(ErrorNumber::PermissionDenied, at);
    QFile::remove(path); // a file left behind is harmless; the new one is what counts
    IniCache::instance().invalidate(path);
    path = target;
    return true;
}

} // namespace corvalent
