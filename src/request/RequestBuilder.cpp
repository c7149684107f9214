#include "request/RequestBuilder.h"

#include "common/ProgramFolder.h"
#include "request/CountryMapping.h"
#include "request/TextTransforms.h"
#include "request/ValueEncoding.h"
#include "services/ServiceCatalogue.h"
#include "services/ServiceDefinition.h"

namespace corvalent {

CountryFileResolution ResolveCountryFile(const QString& serviceFile)
{
    CountryFileResolution r;
    r.value = ServiceSetting(serviceFile, QStringLiteral("CountryFile"));
    if (!r.value.isEmpty()) {
        r.fullPath = ProgramFolder::join(ProgramFolder::path(), r.value);
        r.exists = FolderFileExists(r.fullPath);
    }
    return r;
}

std::optional<QString> RequestVariable(const QString& serviceFile, int row)
{
    QString name = ServiceSetting(serviceFile, QStringLiteral("V%1").arg(row));
    if (name.isEmpty())
        return std::nullopt;
    if (name.startsWith(QLatin1Char('&')))
        name.remove(0, 1);
    return name;
}

QString BuildRequest(const QString& serviceFile, const FieldTexts& fields, const QString& countryFilePath)
{
    QString request = ServiceSetting(serviceFile, QStringLiteral("URL"));
    if (!request.startsWith(QLatin1String("http://"), Qt::CaseInsensitive))
        request.prepend(QLatin1String("http://"));

    const bool utf8 = SendsUtf8(serviceFile);
    for (int row = 0; row < kFieldRows; ++row) {
        const auto name = RequestVariable(serviceFile, row);
        if (!name || fields[row].isEmpty())
            continue;
        if (!request.endsWith(QLatin1Char('?')))
            request += QLatin1Char('&');
        QString value = row == kCountryRow ? Get_Country(fields[kCountryRow], countryFilePath, serviceFile)
                        : utf8             ? fields[row]
                                           : Remove_Accents(fields[row]);
        if (utf8)
            value = PercentEncodeUtf8(value);
        request += *name + QLatin1Char('=') + value;
    }
    return request;
}

} // namespace corvalent
