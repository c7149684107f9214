#pragma once

#include "common/Error.h"

#include <QString>
#include <source_location>

namespace corvalent {

// The handful of classic runtime conversions whose exact rules the program's behaviour depends on.

// Val: the leading number of a text. Blanks, tabs and line feeds are skipped wherever they stand; an optional
// sign, digits, one decimal point and an exponent (E or D) are read; "&H" and "&O" read hexadecimal and octal;
// reading stops at the first other character. A text with no number gives 0.
double Val(const QString& text);

// IsNumeric for a text: optional blanks, an optional sign, digits with at most one decimal point (at least one
// digit), an optional exponent (E or D, optional sign, digits), optional blanks. "" is not numeric.
bool IsNumeric(const QString& text);

// CInt and CLng: a numeric text rounded half to even. A text that is not numeric raises "Type mismatch" (13);
// one out of range raises "Overflow" (6).
qint16 CInt(const QString& text, std::source_location at = std::source_location::current());
qint32 CLng(const QString& text, std::source_location at = std::source_location::current());

// CStr of a number: at most 15 significant digits, no trailing zeros, no decimal point for whole numbers.
QString NumberText(double value);

// Trim, LTrim, RTrim: remove spaces only (not tabs), as the runtime does.
QString Trim(const QString& text);

} // namespace corvalent
