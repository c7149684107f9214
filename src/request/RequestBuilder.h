#pragma once

#include "request/FieldTexts.h"

#include <QString>
#include <optional>

namespace corvalent {

// The country file a service names, resolved against the program's folder.
struct CountryFileResolution {
    QString value;    // the CountryFile key as written ("" when the service names none)
    QString fullPath; // "" when the service names none
    bool exists = true;
};
CountryFileResolution ResolveCountryFile(const QString& serviceFile);

// The service's URL with "http://" in front unless it starts with it (so https://... becomes http://https://...),
// then name=value for every row with a variable name and a non-empty field, each pair after "&" unless the address
// ends in "?". The country row is mapped to the service's country code. Values are accent-folded and nothing is
// percent-encoded, unless the service's Encoding is "utf-8": then each value is percent-encoded as it stands.
QString BuildRequest(const QString& serviceFile, const FieldTexts& fields, const QString& countryFilePath);

// The variable name of a row as sent, one leading "&" dropped; nullopt when the row has no variable name.
std::optional<QString> RequestVariable(const QString& serviceFile, int row);

} // namespace corvalent
