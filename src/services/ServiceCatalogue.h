#pragma once

#include <QString>
#include <QStringList>
#include <source_location>

namespace corvalent {

// The one existence test of the program, for files and folders alike; false for "".
bool FolderFileExists(const QString& path);

// The stored names of the services in `folder`, in the order the folder lists them. Only files whose extension,
// counted from the first ".", is exactly ".isf" are services: a.b.isf and X.ISF are not. A missing folder gives an
// empty list. A file whose name has no "." at all stops the listing with "Invalid procedure call or argument".
QStringList ListServiceFiles(const QString& folder, std::source_location at = std::source_location::current());

// The text from the first "." to the end; a name without "." raises "Invalid procedure call or argument".
QString FileExtension(const QString& fileName, std::source_location at = std::source_location::current());

// The last element of a path with every ".isf" removed.
QString FileStem(const QString& path);

// The entries of a service list: a blank first when asked, then the display names of the services in the Presets
// folder. The list's text is then set to DisplayName(selected).
QStringList ServiceListEntries(const QString& presetsFolder, bool addBlank,
                               std::source_location at = std::source_location::current());

} // namespace corvalent
