#pragma once

#include <QByteArray>
#include <QString>

namespace corvalent {

// Puts a downloaded service file into the Presets folder. The bytes go to a temporary file in that folder, which
// is renamed over `fileName` only when all of it is written: the installed file stays as it was until then, and
// a failed write leaves nothing behind. Only a plain file name is accepted. Answers "" on success, otherwise what
// went wrong.
QString InstallServiceFile(const QString& presetsFolder, const QString& fileName, const QByteArray& bytes);

// Deletes the installed service of a shown name; answers whether it went.
bool DeleteInstalledService(const QString& presetsFolder, const QString& shownName);

} // namespace corvalent
