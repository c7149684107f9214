#pragma once

#include "request/FieldTexts.h"

#include <QByteArray>
#include <QString>

namespace corvalent {

// The one POST page: the program's folder, then this fixed name. Every POST request overwrites it.
inline const QString kPostPageName = QStringLiteral("~10936986498598137458976958.htm");
QString PostPagePath();

// The page that posts the service's variables to the postal lookup as soon as it loads: Windows-1252, CR LF line
// breaks. Names and values go in unquoted and unescaped, and the country is sent as displayed; a value with a
// blank is cut there by the browser, and that is how the lookup has always been fed. A service whose Encoding is
// "utf-8" gets a UTF-8 page that says so, with names and values quoted and HTML-escaped and no accent folding.
QByteArray PostPageContent(const QString& serviceFile, const FieldTexts& fields);

// Writes the page (readable by the user only; an existing link at that path is replaced, never followed), opens
// it in the browser, and has it deleted once the browser has read it.
void WritePostPage(const QString& serviceFile, const FieldTexts& fields);

} // namespace corvalent
