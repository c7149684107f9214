#pragma once

#include <QString>

namespace corvalent {

// Each of these runs behind the error trap: an error shows the error box and the function answers "" (false).

// Folds the accented letters é è ê ë à â ä ì ï î ò ö ô ù ü û, in either case, to their lower-case base letter, in
// that order; ô becomes a, and that stays so. Nothing else is touched.
QString Remove_Accents(const QString& Text);

// The number of a displayed phone entry "[type] number": the text after the first "]", trimmed; the text as it
// is when there is no "]".
QString GetVal(const QString& Text);

// The phone value a service row sends: for a phone-based service (Base 1) the digits of the number, picked by the
// row's PhFormat positions when it has them; otherwise the number as GetVal gives it.
QString Custom_Phone(const QString& Phone, int Row, const QString& ServiceFile);

// The leading house number of a street line ("12B Main St" gives "12"), or "".
QString Get_Home_Number(const QString& Street);

// The street line without its house number and without what stands before its first letter or digit. For the
// postal-code lookup the street type is then normalised to its postal abbreviation.
QString Remove_Home_Number(const QString& Street, const QString& ServiceFile);

// A generous letter test on the character's Windows-1252 code: A-Z, and every code above 96 (so braces, the
// tilde and all characters above 127 count as letters).
bool Is_Letter(const QString& Char);

// The text without the characters whose Windows-1252 code is below `Below`, unless "|code|" is in `Allowed`.
QString RemoveInvalidChar(const QString& Text, qint16 Below, const QString& Allowed);

} // namespace corvalent
