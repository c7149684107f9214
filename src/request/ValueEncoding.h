#pragma once

#include <QString>

namespace corvalent {

// Whether the service's Encoding key asks for "utf-8": then a value reaches the service whole, percent-encoded in
// the GET address and quoted and escaped on the POST page. Otherwise values go as they always have, unescaped and
// accent-folded, which cuts "Procter & Gamble" at the "&".
bool SendsUtf8(const QString& serviceFile);

// `value` as UTF-8 with every byte outside the RFC 3986 unreserved characters (letters, digits, "-._~")
// percent-encoded, so that "&", "+", "=", "#", blanks and accents arrive as typed.
QString PercentEncodeUtf8(const QString& value);

} // namespace corvalent
