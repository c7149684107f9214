#pragma once

#include <QString>

namespace corvalent {

// Rewrites the street-type words of a street line as the postal service's standard abbreviations
// ("Main Street" -> "Main ST", "rue Principale" -> "RUE Principale"). Every other word is left as typed.
QString NormaliseStreetType(const QString& street);

} // namespace corvalent
