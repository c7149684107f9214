#include "request/CountryMapping.h"

#include "common/ErrorTrap.h"
#include "prefs/Preferences.h"
#include "services/IniLib.h"
#include "services/ServiceDefinition.h"

namespace corvalent {

QString Get_Country(const QString& Country, const QString& CountryFilePath, const QString& ServiceFile)
{
    return trapped(QStringLiteral("frmMain: Function Get_Country"), QString(), [&] {
        QString code = GetKeyValue(QStringLiteral("Countries"), Country, QString(), QString(), QString(),
                                   CountryFilePath);
        if (code.isEmpty())
            code = ServiceSetting(ServiceFile, QStringLiteral("DefaultCountry"), QStringLiteral("US"));
        if (code.isEmpty())
            code = GetSetting(QStringLiteral("Country"), QString());
        return code;
    });
}

} // namespace corvalent
