#pragma once

#include <QString>

namespace corvalent {

// The code a service expects for a contact's country: the "Countries" entry of the country file (of Settings.ini
// when the path is ""), else the service's DefaultCountry (default "US"), else the user's preferred country.
QString Get_Country(const QString& Country, const QString& CountryFilePath, const QString& ServiceFile);

} // namespace corvalent
