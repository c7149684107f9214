#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>
#include <utility>

namespace corvalent {

// Every INI read and write of the program goes through these two functions.

// The settings file used whenever a caller passes an empty file name. Set once at start-up; until then it is
// Settings.ini in the program's folder.
void SetIniSettingsFile(const QString& path);
QString IniSettingsFile();

// The longest value a read returns; longer values are cut.
inline constexpr int kMaxIniValueLength = 254;

// Reads `KeyName` of `Section`. A missing file, section or key, and a key whose value is empty, read as `Default`.
// `KeyType` "Numeric" or "Boolean" checks that the value is numeric and answers `FailValue` (when not "") if it is
// not; any other `KeyType` checks nothing. An empty `FileName` means the settings file, and the caller's variable
// is set to that path.
QString GetKeyValue(const QString& Section, const QString& KeyName, const QString& Default,
                    const QString& KeyType, const QString& FailValue, QString& FileName);
QString GetKeyValue(const QString& Section, const QString& KeyName, const QString& Default,
                    const QString& KeyType, const QString& FailValue, const QString& FileName);

// Writes one key, creating the file and the section when they are missing and replacing the key in place when
// it is there. The value is written as given. Answers false when the file could not be written, or when the
// value holds a line break (which would break the file). The file is replaced atomically: a crash leaves the old
// file or the new one, never a mix.
bool WriteKeyValue(const QString& Section, const QString& KeyName, const QString& Value, QString& FileName);
bool WriteKeyValue(const QString& Section, const QString& KeyName, const QString& Value, const QString& FileName);

// Several keys of one section written in one step, with the bytes that writing them one by one would give: a
// crash leaves the file as it was or with every key written, never a part of them. `startFrom`, when given,
// stands for the file's present bytes (a new service starts from its bare section, a renamed one from the file
// it was copied from). A key whose value holds a line break is left out and makes the answer false.
using IniKeys = QList<std::pair<QString, QString>>;
bool WriteKeyValues(const QString& Section, const IniKeys& keys, const QString& FileName,
                    const std::optional<QByteArray>& startFrom = std::nullopt);

} // namespace corvalent
