#pragma once

#include <QString>
#include <optional>

namespace corvalent {

// True when the text holds two or more lines that are not blank (only spaces and tabs). A single line followed
// by line breaks is one line.
bool isMultiLine(const QString& text);

// The parts of a North American "city, state zip" line that were found in it.
struct CityStateZip {
    std::optional<QString> city;
    std::optional<QString> state; // always the two-letter postal code ("IL", "QC")
    std::optional<QString> zip;   // "62704", "62704-1234", or a Canadian code written "A1A 1A1"

    bool recognised() const { return city || state || zip; }
    bool operator==(const CityStateZip&) const = default;
};

// Recognises a line such as "Springfield, IL 62704", "Springfield IL 62704-1234", "IL 62704", "Springfield,
// Illinois 62704", "Toronto, ON M5H 2N2", "Montréal (Québec) H2X 1Y4" or "Ottawa, Ontario K1P1J1". Full state
// and province names become their postal codes; Canadian postal codes are written "A1A 1A1". A line that is not
// of this shape (a street, a phone number, a lone word) answers nothing recognised.
CityStateZip RecogniseCityStateZip(const QString& text);

} // namespace corvalent
