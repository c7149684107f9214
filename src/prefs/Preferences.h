#pragma once

#include <QString>

namespace corvalent {

// The per-user preferences store: string values under the program's title, section "Settings". Every reader
// passes its own default, returned when the key is missing.
QString GetSetting(const QString& key, const QString& defaultValue);
void SaveSetting(const QString& key, const QString& value);

} // namespace corvalent
