#include "request/ValueEncoding.h"

#include "services/ServiceDefinition.h"

namespace corvalent {

bool SendsUtf8(const QString& serviceFile)
{
    return IsUtf8Encoding(ServiceSetting(serviceFile, kEncodingKey));
}

QString PercentEncodeUtf8(const QString& value)
{
    return QString::fromLatin1(value.toUtf8().toPercentEncoding());
}

} // namespace corvalent
