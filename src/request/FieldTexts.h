#pragma once

#include "services/ServiceDefinition.h"

#include <QString>
#include <array>

namespace corvalent {

// The texts of the ten field boxes, rows 0 to 9: contact, company, address, city, state, zip, country and the three
// custom rows. Requests are built from what the boxes show, not from the contact record.
using FieldTexts = std::array<QString, kFieldRows>;

inline constexpr int kCountryRow = 6; // the only row that passes through country mapping

} // namespace corvalent
